#pragma once
// "Assign Doctors": which doctor sits in which consulting room on a day, and the sign-off
// at the end of a doctor's shift.

#include <QVariantMap>
#include <QWidget>

class QComboBox;
class QDateEdit;
class QTableView;

namespace tolmar {

class AppContext;

class frmSchedDoctor : public QWidget {
    Q_OBJECT
public:
    frmSchedDoctor(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

public slots:
    void fillGrid();

private:
    void fillLists();
    void editRow();
    void save();
    void clearFields();
    int currentSno() const;

    AppContext& m_ctx;
    QDateEdit* m_dtDate;
    QComboBox* m_cboVehNo;
    QComboBox* m_cboReason;
    QTableView* m_grdData;
    int m_sno = 0;  // the assignment being edited; 0 while adding
};

}  // namespace tolmar
