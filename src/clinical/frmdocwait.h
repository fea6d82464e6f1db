#pragma once
// "Waiting List Details": the patients waiting for one doctor at one clinic on a day,
// opened from the doctors' queue of the registration screen.

#include <QDialog>
#include <QVariantMap>

class QTableView;

namespace tolmar {

class AppContext;

class frmDocWait : public QDialog {
    Q_OBJECT
public:
    // args: "Date" (QDate), "EmpID", "ClinicID".
    frmDocWait(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

protected:
    void done(int result) override;

private:
    AppContext& m_ctx;
    QTableView* m_grid;
};

}  // namespace tolmar
