#pragma once
// "Patients' Phone / Email Book": how to reach the patients who came over a span of days,
// and the referral book for the same days.

#include <QVariantMap>
#include <QWidget>

class QDateEdit;
class QLabel;
class QTableView;

namespace tolmar {

class AppContext;

class frmPhoneBook : public QWidget {
    Q_OBJECT
public:
    frmPhoneBook(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

private:
    void cmdReorderClick();
    void cmdExpectedClick();
    void cmdExcelClick();

    AppContext& m_ctx;
    QDateEdit* m_dtStart;
    QDateEdit* m_dtEnd;
    QLabel* m_lblShow;
    QTableView* m_grid;
};

}  // namespace tolmar
