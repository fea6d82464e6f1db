#pragma once
// "Consultation": complaints, diagnosis and treatment typed for a patient waiting for a
// doctor, and the day's consultations.

#include <QVariantMap>
#include <QWidget>

class QComboBox;
class QDateEdit;
class QLabel;
class QPlainTextEdit;
class QTableView;
class QTimeEdit;

namespace tolmar {

class AppContext;

class frmConsultation : public QWidget {
    Q_OBJECT
public:
    frmConsultation(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

public slots:
    void fillGrid();
    void getPatList();

private:
    void patientPicked();
    void editRow();
    void save();
    void clearFields();

    AppContext& m_ctx;
    QLabel* m_heading;
    QComboBox* m_cboVehNo;
    QLabel* m_lblBill;
    QLabel* m_lblClient;
    QLabel* m_lblNo;
    QDateEdit* m_dtDate;
    QTimeEdit* m_dtTime;
    QPlainTextEdit* m_txtComp;
    QPlainTextEdit* m_txtDiag;
    QPlainTextEdit* m_txtPresc;
    QComboBox* m_cboReason;
    QTableView* m_grdData;
    int m_id = 0;  // the consultation being edited; 0 for a new one
};

}  // namespace tolmar
