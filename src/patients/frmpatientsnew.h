#pragma once
// "Patient Attendance / Registration": the screen the front desk lives in. It adds and
// edits patients, looks them up, and takes the first attendance with the same save.

#include "patients/registrationform.h"
#include "platform/prompt.h"

#include <QVariantMap>
#include <QWidget>

#include <optional>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTabWidget;
class QTableView;
class QTimeEdit;
class QTimer;

namespace tolmar {

class AppContext;

class frmPatientsNew : public QWidget {
    Q_OBJECT
public:
    frmPatientsNew(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

    enum class Mode { View, Add, Edit };
    Mode mode() const { return m_mode; }
    bool isEdit() const { return m_isEdit; }
    double carryOverDebt() const { return m_carryOverDebt; }
    const QString& selectedRetainID() const { return m_selectedRetainID; }
    const QString& selectedClientType() const { return m_selectedClientType; }
    const QString& selectedClientCat() const { return m_selectedClientCat; }
    const QString& selectedPurpose() const { return m_selectedPurpose; }
    double screeningAmount() const { return m_screeningAmount; }
    double consultationAmount() const { return m_consultationAmount; }

    // Everything the save needs, as the screen holds it now.
    patients::RegistrationForm gatherForm() const;

public slots:
    void loadBoxes();
    void fillGrid();
    void getDocWaitList();
    void clearFields();
    void EnableFields(bool lock);
    // Copies a patient into the fields (a double click on grdData does it for the row).
    void editVal(const QString& pno);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void buildForm();
    void buildPersonal(QWidget* column);
    void buildCardAndPayer(QWidget* column);
    void buildKinAndAttendance(QWidget* column, QWidget* attendance);
    void buildGrids();
    void connectRules();
    void loadStaticLists();
    void setMode(Mode mode);

    void cmdAddClick();
    void cmdEditClick();
    void cmdCancelClick();
    void cmdDelClick();
    void cmdRefreshClick();
    void okButtonClick();
    void cmdPatDepClick();
    // Empties the person's own fields and starts adding a dependant of `principal`.
    void addDependantOf(const QString& principal);
    // The quick search's buttons: by name, card number and telephone, no limit.
    void searchByButton(const QString& mode, const QString& blankMessage);
    void cmdCardClick();
    // Every change of txtName: a name search of its own after SearchWaitTime.
    void txtNameChanged(const QString& text);
    // The desk's search into grdData; a failure keeps the grid as it was.
    void runSearch(const QString& mode, int limit, const QString& text);
    // A double click on grdData: the patient loaded and in Edit, with its note shown.
    void grdDataDoubleClicked(int row);
    void cmdAttendClick();
    void cmdANCClick();
    void cmdCommClick();
    void cmdRenewClick();
    void cmdPlanClick();

    void payerChosen();
    void categoryChosen();
    void fillCategories();
    void fillPlans();
    void cardDurationChosen();
    void hmoReferralChosen();
    void purposeChosen();
    void clinicChosen();
    void maturityChosen();
    void ageTyped();
    void dobChanged();
    void attendanceTicked(bool on);
    void debtDoubleClicked();
    void surnameLeft();
    // Lists the patients on file that the one being added may be; never asks anything.
    void showLikelyDuplicates();
    void docGridDoubleClicked(int row);
    void showPhoto(const QString& pno);

    QString gridValue(QTableView* grid, int row, const QString& column) const;
    QString currentPNo() const;
    void showTab(int index);
    QWidget* page(int index) const;

    AppContext& m_ctx;
    Mode m_mode = Mode::View;

    // Working state.
    bool m_isEdit = false;
    bool m_isAddingDependant = false;
    bool m_isLoadingRow = false;
    bool m_ageTyping = false;
    QString m_selectedRetainID;
    QString m_selectedCoyName;
    QString m_selectedRetainCode;
    QString m_selectedClientType;
    QString m_selectedClientCat;
    QString m_loadedRetainID;
    QString m_loadedCoyName;
    QString m_loadedPatCat;
    QString m_editPNo;
    QString m_principalPNo;
    QString m_selectedPurpose;
    QString m_lastSurnameChecked;
    // The search the list shows when it is not today's registrations, to run again after
    // a deletion; empty text: the registrations.
    QString m_searchMode;
    QString m_lastSearchText;
    int m_lastSearchLimit = 0;
    // Incremental searches waiting for their time; the hourglass stays while any does.
    int m_pendingSearches = 0;
    int m_searchGeneration = 0;  // the newest search asked for
    std::optional<Prompter::BusyGuard> m_searchBusy;
    double m_carryOverDebt = 0;
    double m_screeningAmount = 0;
    double m_consultationAmount = 0;
    bool m_pendingCardRenewal = false;

    // Controls, in tab order.
    QLabel* m_label5 = nullptr;
    QLineEdit* m_txtName = nullptr;
    QPushButton* m_cmdOK = nullptr;
    QPushButton* m_cmdCard = nullptr;
    QPushButton* m_cmdSys = nullptr;
    QLabel* m_lblFound = nullptr;
    QTabWidget* m_tabs = nullptr;
    QComboBox* m_cboNew = nullptr;
    QComboBox* m_cboTitle = nullptr;
    QLineEdit* m_txtSurname = nullptr;
    QLineEdit* m_txtFirstName = nullptr;
    QLineEdit* m_txtHomeAddress = nullptr;
    QComboBox* m_cboArea = nullptr;
    QLineEdit* m_txtOfficeAddress = nullptr;
    QLineEdit* m_txtPhone = nullptr;
    QLineEdit* m_txtEmail = nullptr;
    QComboBox* m_txtSex = nullptr;
    QDateEdit* m_dtDate = nullptr;
    QLineEdit* m_txtAge = nullptr;
    QComboBox* m_cboMat = nullptr;
    QGroupBox* m_fraDuplicates = nullptr;
    QListWidget* m_lstDuplicates = nullptr;
    QLabel* m_piX = nullptr;
    QHBoxLayout* m_fileButtons = nullptr;
    QComboBox* m_cboFile = nullptr;
    QComboBox* m_cboCard = nullptr;
    QLineEdit* m_txtSupp = nullptr;
    QLineEdit* m_txtOLD = nullptr;
    QDateEdit* m_dtRegDate = nullptr;
    QDateEdit* m_dtExpDate = nullptr;
    QComboBox* m_cboPat = nullptr;
    QComboBox* m_cboClient = nullptr;
    QCheckBox* m_chkAll = nullptr;
    QLineEdit* m_txtEmp = nullptr;
    QComboBox* m_txtPolicy = nullptr;
    QPushButton* m_cmdPlan = nullptr;
    QComboBox* m_cboRef = nullptr;
    QComboBox* m_cboRefHmo = nullptr;
    QComboBox* m_cboIntro = nullptr;
    QComboBox* m_cboMStatus = nullptr;
    QComboBox* m_txtBG = nullptr;
    QComboBox* m_txtGeno = nullptr;
    QLineEdit* m_txtOccu = nullptr;
    QComboBox* m_cboStatus = nullptr;
    QLineEdit* m_txtKin = nullptr;
    QLineEdit* m_txtNOKPhone = nullptr;
    QComboBox* m_txtKinRel = nullptr;
    QLineEdit* m_txtKinAddress = nullptr;
    QLineEdit* m_txtAdmitLimit = nullptr;
    QLabel* m_lblDebtCap = nullptr;
    QLabel* m_lblDebt = nullptr;
    QCheckBox* m_chkReg = nullptr;
    QGroupBox* m_fraAttd = nullptr;
    QComboBox* m_cboClin = nullptr;
    QComboBox* m_cboPurpose = nullptr;
    QLabel* m_lblAmount = nullptr;
    QComboBox* m_cboDoc = nullptr;
    QDateEdit* m_dtNext = nullptr;
    QTimeEdit* m_dtRefTime = nullptr;

    QTableView* m_grdData = nullptr;
    QTableView* m_grdDoc = nullptr;
    QTableView* m_grdAttend = nullptr;
    QPushButton* m_cmdAttend = nullptr;
    QTimer* m_timer1 = nullptr;

    QPushButton* m_cmdAdd = nullptr;
    QPushButton* m_cmdEdit = nullptr;
    QPushButton* m_okButton = nullptr;
    QPushButton* m_cmdCancel = nullptr;
    QPushButton* m_cmdDel = nullptr;
    QPushButton* m_cmdRefresh = nullptr;
    QPushButton* m_cmdRenew = nullptr;
    QPushButton* m_cmdPatDep = nullptr;
    QPushButton* m_cmdPix = nullptr;
    QPushButton* m_cmdTake = nullptr;
    QPushButton* m_cmdANC = nullptr;
    QPushButton* m_cmdComm = nullptr;
    QPushButton* m_cmdClinic = nullptr;
    QPushButton* m_cancelButton = nullptr;
};

}  // namespace tolmar
