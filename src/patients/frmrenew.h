#pragma once
// "Patient Card Renewal": gives an expired private card a new year from the renewal day.
// Opened by the registration screen ("REG"), the attendance screen ("RECORDS") and the menu;
// the openers with a tag get the new date back through the session.

#include <QDialog>
#include <QVariantMap>

class QDateEdit;
class QLineEdit;
class QTableView;

namespace tolmar {

class AppContext;

class frmRenew : public QDialog {
    Q_OBJECT
public:
    // args: "name", "PNo", "tag" ("REG", "RECORDS" or none).
    frmRenew(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

    // How many days the loaded card is past its expiry (qryhCardExpiredForPrivate.numval).
    int numval() const { return m_numval; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void load();
    void cmdRenewClick();
    void clearFields();

    AppContext& m_ctx;
    QString m_pno;
    QString m_name;
    QString m_tag;
    int m_numval = 0;

    QLineEdit* m_txtFull;
    QLineEdit* m_txtCat;
    QLineEdit* m_txtNo;
    QLineEdit* m_txtRegDate;
    QLineEdit* m_txtExpiry;
    QLineEdit* m_txtDuration;
    QLineEdit* m_txtOldNo;
    QDateEdit* m_DTPicker1;
    QDateEdit* m_dtExpDate;
    QTableView* m_grid;
};

}  // namespace tolmar
