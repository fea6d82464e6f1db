#pragma once
// "Role Creation": a new role of the suite, by id and name, over the grid of all roles.
// The status bar tells what the form is waiting for.

#include <QVariantMap>
#include <QWidget>

class QLineEdit;
class QPushButton;
class QStatusBar;
class QTableView;

namespace tolmar {

class AppContext;

class frmRole : public QWidget {
    Q_OBJECT
public:
    frmRole(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void fillGrid();
    void submit();
    void hint(const QString& text);

    AppContext& m_ctx;
    QLineEdit* m_id;
    QLineEdit* m_name;
    QTableView* m_grid;
    QStatusBar* m_status;
    QPushButton* m_submit;
    QPushButton* m_cancel;
};

}  // namespace tolmar
