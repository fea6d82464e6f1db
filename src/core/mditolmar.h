#pragma once
// The one top-level window: a multiple-document frame with the whole menu, the button strip
// (Picture1) with the server clock and the debt panel (Frame1), the status bar, and the
// timers that watch the database for work that has come due. Screens open inside it
// through the screen host.

#include <QMainWindow>
#include <QVariantMap>

#include <functional>
#include <memory>

class QFrame;
class QLabel;
class QMdiArea;
class QMenu;
class QPushButton;
class QTimer;

namespace tolmar {

class AppContext;
class MainWatch;
namespace reports {
enum class MenuReport;
}
class SoundPlayer;

class MdiTolmar : public QMainWindow {
    Q_OBJECT
public:
    explicit MdiTolmar(AppContext& ctx, QWidget* parent = nullptr);
    ~MdiTolmar() override;

    QMdiArea* mdiArea() const { return m_area; }

    // The window's load, in order: title and panels, button visibility, the activity row of
    // this run, the Log Off caption, the expiry sweep of cards, the workstation's names.
    void load();
    // Title and status panels from the session, after start-up or "Reload Defaults".
    void applySession();

    // Helpers called by the timers and by other screens; each adds its line to `notice`.
    void VerifyApptDate(QString& notice);
    void VerifyDueDelivery(QString& notice);
    void VerifyAdmissionWaitList(QString& notice);
    void VerifyDueDischDate(QString& notice);
    // Shows a message of `count` "X" characters.
    void getCompName(int count);
    // Reads the server's clock into the session and, when it gave one, into Frame1.
    void refreshServerClock();

    // The debt panel, for the billing routine: a debt or credit to flash, or nothing.
    void showDebt(const QString& caption);
    void clearDebt();

    // The sound file of the timers: beside the program, beside the settings, or our own.
    QString ringFile() const;

public slots:
    void timer1Tick();
    void timer3Tick();
    void timer2Tick();
    void tmrNotifyTick();
    void tmrExpiredTick();
    void tmrMDITick();
    void tmrSoundTick();
    void tmrWaitTick();
    // Picture1 clicked: shows or hides the flashing debt.
    void togglePicture1();
    // "Log off": closes the activity row as the user's own and ends the run, unasked.
    void logOff();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Stops the debt flash and puts panel and caption back in their resting colours.
    void quietDebt();
    void buildMenus();
    void buildStrip();
    void buildTimers();
    QAction* entry(QMenu* menu, const QString& name, const QString& caption,
                   std::function<void()> does = {});
    QAction* screenEntry(QMenu* menu, const QString& name, const QString& caption,
                         const QString& screen, const QVariantMap& args = {});
    QTimer* timer(const QString& name, int interval, bool running);
    void command(const std::function<void()>& body);
    void watchTick(const char* timerName, const std::function<void()>& body);
    void openScreen(const QString& screen, const QVariantMap& args = {});
    void requirePatientOnScreen();
    void declareExpiredCards();
    void readWorkstationNames();
    void endRun(bool autoLogoff, const QString& remarks);
    void fillWindowMenu();
    void tileWindows(Qt::Orientation orientation);
    void cmdLocClick();
    void cmdFeeClick(const QString& screen);
    void sendMail();
    void menuReport(reports::MenuReport which);
    void printActiveWindow();

    AppContext& m_ctx;
    std::unique_ptr<MainWatch> m_watch;
    std::unique_ptr<SoundPlayer> m_sound;
    QMdiArea* m_area = nullptr;
    QLabel* m_rolePanel = nullptr;
    QLabel* m_userPanel = nullptr;
    QFrame* m_picture1 = nullptr;
    QFrame* m_frame1 = nullptr;
    QLabel* m_lblDate = nullptr;
    QLabel* m_lblTime = nullptr;
    QLabel* m_lblDebt = nullptr;
    QPushButton* m_cmdExpired = nullptr;
    QPushButton* m_cmdLoc = nullptr;
    QPushButton* m_cmdView = nullptr;
    QMenu* m_windowMenu = nullptr;
    QAction* m_logOff = nullptr;
    QTimer* m_timer1 = nullptr;
    QTimer* m_timer2 = nullptr;
    QTimer* m_timer3 = nullptr;
    QTimer* m_tmrNotify = nullptr;
    QTimer* m_tmrExpired = nullptr;
    QTimer* m_tmrMDI = nullptr;
    QTimer* m_tmrSound = nullptr;
    // Which of its two colours each flashing control shows now.
    bool m_notifyPhase = false;
    bool m_expiredPhase = false;
    bool m_mdiPhase = false;
    bool m_debtPhase = false;
    // Set once the run is ending, so that closing asks nothing more.
    bool m_ending = false;
};

}  // namespace tolmar
