// The process entry: options, then the start-up routine, then the main window.

#include "core/appcontext.h"
#include "core/appdefaults.h"
#include "core/demoworkspace.h"
#include "core/installation.h"
#include "core/mditolmar.h"
#include "core/screenhost.h"
#include "core/startup.h"
#include "platform/prompt.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QAction>
#include <QPainter>
#include <QPixmap>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace {

void say(const QString& line)
{
    std::fprintf(stderr, "%s\n", line.toLocal8Bit().constData());
    std::fflush(stderr);
}

void tell(const QString& line)
{
    std::fprintf(stdout, "%s\n", line.toLocal8Bit().constData());
    std::fflush(stdout);
}

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

}  // namespace

int main(int argc, char* argv[])
{
    // Without a display the program still starts (for --screenshot and --init-demo);
    // message boxes then go to stderr.
    if (!hasDisplay())
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tolmar Records"));
    QApplication::setApplicationVersion(QStringLiteral("%1.%2.%3")
                                            .arg(tolmar::kVersionMajor)
                                            .arg(tolmar::kVersionMinor)
                                            .arg(tolmar::kVersionRevision));

    QCommandLineParser cl;
    cl.setApplicationDescription(tolmar::install::helpText());
    cl.addHelpOption();
    cl.addVersionOption();
    const QCommandLineOption home(QStringLiteral("home"),
                                  QStringLiteral("Folder of made.sys, sysdoc.sys, key.db and "
                                                 "Reports (default: TOLMAR_HOME, the "
                                                 "program's folder if it holds made.sys, "
                                                 "else ~/.local/share/tolmar-records)."),
                                  QStringLiteral("DIR"));
    const QCommandLineOption shot(QStringLiteral("screenshot"),
                                  QStringLiteral("Save the main window to FILE once shown, "
                                                 "then exit."),
                                  QStringLiteral("FILE"));
    const QCommandLineOption openScreen(
        QStringLiteral("open"),
        QStringLiteral("For screenshots: after start-up, trigger the menu entry or open the "
                       "screen of this name (may be given more than once)."),
        QStringLiteral("NAME"));
    const QCommandLineOption demo(QStringLiteral("init-demo"),
                                  QStringLiteral("Make a demo workspace in DIR and exit."),
                                  QStringLiteral("DIR"));
    const QCommandLineOption server(QStringLiteral("server"),
                                    QStringLiteral("With --init-demo: a PostgreSQL server "
                                                   "HOST[:PORT] instead of SQLite files; with "
                                                   "--init-desk: the desk's server."),
                                    QStringLiteral("HOST"));
    const QCommandLineOption patients(QStringLiteral("patients"),
                                      QStringLiteral("With --init-demo: how many synthetic "
                                                     "patients (default 300)."),
                                      QStringLiteral("N"), QStringLiteral("300"));
    cl.addOptions({home, shot, openScreen, demo, server, patients});
    const QCommandLineOption initServer(
        QStringLiteral("init-server"),
        QStringLiteral("Set a hospital's server up (HOST[:PORT], or sqlite:DIR) without demo "
                       "data, or upgrade it with --upgrade; then exit."),
        QStringLiteral("HOST"));
    const QCommandLineOption database(QStringLiteral("database"),
                                      QStringLiteral("With --init-server or --init-desk: the "
                                                     "PostgreSQL database (default tolmar)."),
                                      QStringLiteral("NAME"));
    const QCommandLineOption hno(QStringLiteral("hospital-number"),
                                 QStringLiteral("The hospital number, three letters or digits."),
                                 QStringLiteral("HNO"));
    const QCommandLineOption hname(QStringLiteral("hospital-name"),
                                   QStringLiteral("With --init-server: the hospital's name."),
                                   QStringLiteral("NAME"));
    const QCommandLineOption admin(QStringLiteral("admin"),
                                   QStringLiteral("With --init-server: the administrator's user "
                                                  "name (holds RECORDS and MANAGEMENT)."),
                                   QStringLiteral("USER"));
    const QCommandLineOption upgrade(QStringLiteral("upgrade"),
                                     QStringLiteral("With --init-server: upgrade an older "
                                                    "schema, one transaction per step."));
    const QCommandLineOption initDesk(QStringLiteral("init-desk"),
                                      QStringLiteral("Set a desk's folder up against --server "
                                                     "and exit."),
                                      QStringLiteral("DIR"));
    const QCommandLineOption user(QStringLiteral("user"),
                                  QStringLiteral("With --init-desk: the user signed on at the "
                                                 "desk (default: the login name)."),
                                  QStringLiteral("NAME"));
    cl.addOptions({initServer, database, hno, hname, admin, upgrade, initDesk, user});
    cl.process(app);

    try {
        if (cl.isSet(initServer)) {
            tolmar::install::initServer({cl.value(initServer), cl.value(database),
                                         {cl.value(hno), cl.value(hname), {}, {}},
                                         cl.value(admin), cl.isSet(upgrade), tell});
            return 0;
        }
        if (cl.isSet(initDesk)) {
            const QString who = cl.isSet(user) ? cl.value(user) : qEnvironmentVariable("USER");
            tolmar::install::initDesk({cl.value(initDesk), cl.value(server), cl.value(database),
                                       cl.value(hno), who, tell});
            return 0;
        }
    } catch (const tolmar::SetupError& e) {
        say(e.message());
        return e.exitCode();
    }

    if (cl.isSet(demo)) {
        tolmar::DemoOptions o;
        o.dir = cl.value(demo);
        o.server = cl.value(server);
        bool ok = false;
        o.patients = cl.value(patients).toLongLong(&ok);
        if (!ok || o.patients < 0) {
            say(QStringLiteral("--patients takes a whole number, not \"%1\"").arg(cl.value(patients)));
            return 2;
        }
        o.log = say;
        try {
            tolmar::createDemoWorkspace(o);
        } catch (const std::exception& e) {
            say(QStringLiteral("The demo workspace could not be made: %1")
                    .arg(QString::fromLocal8Bit(e.what())));
            return 1;
        }
        return 0;
    }

    QString homeDir = cl.value(home);
    if (homeDir.isEmpty())
        homeDir = qEnvironmentVariable("TOLMAR_HOME");
    if (homeDir.isEmpty())
        homeDir = tolmar::install::defaultHome(QApplication::applicationDirPath());
    homeDir = QDir(homeDir).absolutePath();

    tolmar::QtPrompter prompter;
    tolmar::Clock clock;
    tolmar::AppContext ctx(homeDir, prompter, clock);
    std::unique_ptr<tolmar::MdiTolmar> window;

    // "Reload Defaults" and a new server location run the routine again in this process.
    // A fatal condition ends the run; any other failure leaves the window as it was.
    ctx.rerunStartup = [&] {
        const auto r = tolmar::runStartup(ctx);
        if (r.outcome == tolmar::StartupResult::Fatal) {
            ctx.endProcess(r.exitCode);
            return;
        }
        if (window) {
            window->applySession();
            window->showNormal();
            window->raise();
            window->activateWindow();
        }
    };

    const auto first = tolmar::runStartup(ctx);
    if (first.outcome != tolmar::StartupResult::Ok)
        return first.exitCode;

    window = std::make_unique<tolmar::MdiTolmar>(ctx);
    prompter.setParent(window.get());
    window->load();
    // The frame is the desk's whole work area.
    window->showMaximized();
    QCoreApplication::processEvents();
    for (const QString& name : cl.values(openScreen)) {
        if (auto* entry = window->findChild<QAction*>(name))
            entry->trigger();
        else if (!ctx.screens().open(name))
            say(QStringLiteral("No menu entry or screen named %1").arg(name));
    }

    if (cl.isSet(shot)) {
        const QString file = cl.value(shot);
        QTimer::singleShot(300, window.get(), [&, file] {
            // Dialogs are windows of their own: drawn where they stand over the frame.
            QPixmap picture = window->grab();
            QPainter painter(&picture);
            for (QWidget* w : QApplication::topLevelWidgets())
                if (w != window.get() && w->isVisible() && w->parentWidget() == window.get())
                    painter.drawPixmap(w->geometry().topLeft() - window->geometry().topLeft(),
                                       w->grab());
            painter.end();
            const bool saved = picture.save(file);
            say(saved ? QStringLiteral("Screenshot of the main window: %1").arg(file)
                      : QStringLiteral("Could not write the screenshot %1").arg(file));
            QApplication::exit(saved ? 0 : 1);
        });
    }
    const int status = QApplication::exec();
    window.reset();
    return status;
}
