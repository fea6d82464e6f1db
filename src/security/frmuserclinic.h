#pragma once
// "Assign Clinics to Doctors": the clinics each doctor may attend to.

#include <QVariantMap>
#include <QWidget>

class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace tolmar {

class AppContext;

class frmUserClinic : public QWidget {
    Q_OBJECT
public:
    frmUserClinic(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

public slots:
    void refresh();

private:
    void doctorChosen();
    void tickAll(bool on);
    void checkConfirmation();
    void clearFields();
    QStringList tickedClinics() const;

    AppContext& m_ctx;
    QComboBox* m_cboSys;
    QLineEdit* m_txtUsername;
    QLineEdit* m_txtFullName;
    QLineEdit* m_txtFullName1;
    QLabel* m_lblEmpID;
    QComboBox* m_cboAcctStatus;
    QComboBox* m_cboBranchCode;
    QLineEdit* m_txtPassword;
    QLineEdit* m_txtConfirmPWD;
    QGroupBox* m_frame;
    QListWidget* m_lstDate;
};

}  // namespace tolmar
