#pragma once
// "Verify a Record": the patients already on file under the surname just typed, so the
// desk can see a duplicate before registering the same person twice. It only informs.

#include <QDialog>
#include <QVariantMap>

class QTableView;

namespace tolmar {

class AppContext;

class frmVerify : public QDialog {
    Q_OBJECT
public:
    // args: "Surname", the name to list.
    frmVerify(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void done(int result) override;

private:
    AppContext& m_ctx;
    QTableView* m_grid;
};

}  // namespace tolmar
