#pragma once
// "ATTENDANCE FOR TODAY": the desk finds a patient, takes the day's visit, and edits or
// deletes the visits already taken today, with the doctors' queues in sight.

#include "clinical/attendance.h"

#include <QVariantMap>
#include <QWidget>

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;
class QTimer;

namespace tolmar {

class AppContext;

class frmRecords : public QWidget {
    Q_OBJECT
public:
    // args: "PNo" picks that patient at once; "RefConsultID" names a referral the visit
    // honours.
    frmRecords(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

    bool isEdit() const { return m_isEdit; }
    bool isFound() const { return m_isFound; }
    const QString& purposeClass() const { return m_purposeClass; }
    // What Save would be given now.
    clinical::AttendanceForm attendanceForm() const;

public slots:
    void fillGrid();
    void getDocWaitList();
    void clearFields();

private:
    void buildForm();
    void connectRules();
    void loadLists();
    void setEntry(bool entry);

    void find(const QString& mode);
    void pickPatient(const QString& entry);
    void clinicChosen();
    void purposeChosen();
    void payerChosen();
    void fillCategories(const QString& clientType);
    void fillPlans();
    void showPhoto(const QString& pno);

    void cmdAddClick();
    void cmdCancelClick();
    void cmdEditClick();
    void cmdDelClick();
    void cmdRenewClick();
    void okButtonClick();
    void flashHeading();

    QString cell(const QString& caption) const;

    AppContext& m_ctx;

    // Working state.
    clinical::PickedPatient m_patient;
    QString m_recID;
    QString m_consultID;
    QString m_refConsultID;
    QString m_purposeClass;
    double m_debtToCarry = 0;
    double m_consultFee = 0;
    double m_screeningFee = 0;
    bool m_isEdit = false;
    bool m_isFound = false;
    bool m_loading = false;
    bool m_flashOn = false;

    QLabel* m_label5 = nullptr;
    QLineEdit* m_txtName = nullptr;
    QPushButton* m_cmdOK = nullptr;
    QPushButton* m_cmdCard = nullptr;
    QPushButton* m_cmdSys = nullptr;
    QLabel* m_lblFound = nullptr;
    QComboBox* m_cboVehNo = nullptr;
    QLabel* m_lblNo = nullptr;
    QLabel* m_lblOld = nullptr;
    QLabel* m_lblOccup = nullptr;
    QLabel* m_lblPolicy = nullptr;
    QLabel* m_lblExpire = nullptr;
    QLabel* m_lblBill = nullptr;
    QLabel* m_piX = nullptr;
    QComboBox* m_cboType = nullptr;
    QComboBox* m_cboPurpose = nullptr;
    QComboBox* m_cboPat = nullptr;
    QComboBox* m_cboClient = nullptr;
    QComboBox* m_txtPolicy = nullptr;
    QLineEdit* m_txtEmp = nullptr;
    QComboBox* m_cboRef = nullptr;
    QComboBox* m_cboRefHmo = nullptr;
    QDateEdit* m_dtDate = nullptr;
    QDateEdit* m_dtNext = nullptr;
    QTableView* m_grdData = nullptr;
    QTableView* m_grdDoc = nullptr;
    QPushButton* m_cmdRenew = nullptr;
    QPushButton* m_cmdAdd = nullptr;
    QPushButton* m_cmdEdit = nullptr;
    QPushButton* m_okButton = nullptr;
    QPushButton* m_cmdCancel = nullptr;
    QPushButton* m_cmdDel = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QTimer* m_timer1 = nullptr;
    QTimer* m_tmrBill = nullptr;
};

}  // namespace tolmar
