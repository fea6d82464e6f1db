#pragma once
// "Fees": the short list of extras a desk may add to the next attendance's bill, one at a
// time.

#include <QDialog>
#include <QVariantMap>

class QListWidget;
class QListWidgetItem;

namespace tolmar {

class AppContext;

class frmInstantFee : public QDialog {
    Q_OBJECT
public:
    frmInstantFee(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

private:
    void itemTicked(QListWidgetItem* item);
    void cmdProcessClick();

    AppContext& m_ctx;
    QListWidget* m_list;
    bool m_unticking = false;
};

}  // namespace tolmar
