#pragma once
// "Select an Account": a modal list of ledger accounts; the one ticked goes back into the
// calling screen's account number and name.
//
// Arguments: "caller" (the calling screen's name, which decides the list), "callerWidget"
// (the calling screen itself, a QObject*), "group" (the account group for the callers that
// list one group).

#include <QDialog>
#include <QPointer>
#include <QVariantMap>

class QLabel;
class QListWidget;
class QListWidgetItem;

namespace tolmar {

class AppContext;

class frmRevAcctSelect : public QDialog {
    Q_OBJECT
public:
    frmRevAcctSelect(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

private:
    void fillList();
    void ticked(QListWidgetItem* item);
    void process();

    AppContext& m_ctx;
    QString m_caller;
    QString m_group;
    QPointer<QObject> m_callerWidget;
    QListWidget* m_list;
    QLabel* m_show;
};

}  // namespace tolmar
