#pragma once
// The one top-level window: a multiple-document frame with its status bar. Screens open
// inside it through the screen host.

#include <QMainWindow>

class QLabel;
class QMdiArea;

namespace tolmar {

class AppContext;

class MdiTolmar : public QMainWindow {
    Q_OBJECT
public:
    explicit MdiTolmar(AppContext& ctx, QWidget* parent = nullptr);
    ~MdiTolmar() override;

    QMdiArea* mdiArea() const { return m_area; }
    // Title and status panels from the session, after start-up or "Reload Defaults".
    void applySession();

private:
    AppContext& m_ctx;
    QMdiArea* m_area;
    QLabel* m_rolePanel;
    QLabel* m_userPanel;
};

}  // namespace tolmar
