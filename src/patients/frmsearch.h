#pragma once
// "View Records": every record of a kind, newest visits first, with the deletion of a row
// for the records officer who cleans up after a mistake.

#include "patients/patientlists.h"

#include <QVariantMap>
#include <QWidget>

class QComboBox;
class QLabel;
class QTableView;

namespace tolmar {

class AppContext;

class frmSearch : public QWidget {
    Q_OBJECT
public:
    frmSearch(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showItem(bool refresh);
    void deleteCurrentRow();

    AppContext& m_ctx;
    QComboBox* m_cboItem;
    QLabel* m_lblDisplay;
    QTableView* m_grid;
    patients::RecordTable m_shown;
    bool m_refreshed = false;
};

}  // namespace tolmar
