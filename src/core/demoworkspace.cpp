#include "core/demoworkspace.h"

#include "core/installation.h"
#include "patients/patientgenerator.h"
#include "platform/db.h"
#include "platform/files.h"
#include "platform/local.h"
#include "platform/schema.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <stdexcept>

namespace tolmar {

namespace {

QString readResource(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        throw std::runtime_error(QStringLiteral("Cannot read %1").arg(path).toStdString());
    return QString::fromUtf8(f.readAll());
}

}  // namespace

void writeDemoData(const db::ServerConfig& config)
{
    install::writeHospital(config, {QStringLiteral("001"),
                                    QStringLiteral("TOLMAR SPECIALIST HOSPITAL"),
                                    QStringLiteral("12 HOSPITAL ROAD, IKEJA, LAGOS"),
                                    QStringLiteral("08012345678")});
    // Every file of db/demo, in name order; later features add their own file.
    db::SchemaMigrator migrator(config);
    QDir demo(QStringLiteral(":/db/demo"));
    for (const QString& f : demo.entryList({QStringLiteral("*.sql")}, QDir::Files, QDir::Name))
        migrator.runScript(readResource(demo.filePath(f)));
}

void createDemoWorkspace(const DemoOptions& o)
{
    auto log = [&](const QString& s) {
        if (o.log)
            o.log(s);
    };
    QDir dir(o.dir);
    if (!dir.mkpath(QStringLiteral("Reports/RECORDS")))
        throw std::runtime_error(QStringLiteral("Cannot create %1").arg(o.dir).toStdString());
    const QString home = dir.absolutePath();
    const QString serverName =
        o.server.isEmpty() ? QStringLiteral("sqlite:") + dir.absoluteFilePath(QStringLiteral("data"))
                           : o.server;

    files::writeLines(dir.filePath(QStringLiteral("made.sys")),
                      {QStringLiteral("SVR=") + serverName, QStringLiteral("HNO=001")});
    files::writeLines(dir.filePath(QStringLiteral("sysdoc.sys")), {kDemoUser});

    const QString keyDb = dir.filePath(QStringLiteral("key.db"));
    QFile::remove(keyDb);
    local::createKeyDb(keyDb);
    {
        auto c = local::openKeyDb(keyDb);
        const QString sqliteServer =
            QStringLiteral("sqlite:") + dir.absoluteFilePath(QStringLiteral("data"));
        c->exec(QStringLiteral("INSERT INTO Locations (LocID, LocName) VALUES (?, ?), (?, ?)"),
                {sqliteServer, QStringLiteral("THIS DESK"), QStringLiteral("127.0.0.1:5432"),
                 QStringLiteral("MAIN SERVER")});
    }

    const auto config = db::ServerConfig::fromServerName(serverName, home);
    log(QStringLiteral("Creating the databases on %1").arg(config.describe()));
    db::SchemaMigrator migrator(config);
    migrator.createDatabases();
    if (migrator.currentVersion() > 0)
        throw std::runtime_error(
            QStringLiteral("%1 already holds a database; the demo fills only empty ones.")
                .arg(config.describe())
                .toStdString());
    install::migrateWithDefaults(migrator, 0);
    writeDemoData(config);

    if (o.patients > 0) {
        QElapsedTimer t;
        t.start();
        patients::GeneratorOptions g;
        g.count = o.patients;
        g.progress = [&](qint64 n) { log(QStringLiteral("  %1 patients").arg(n)); };
        patients::generatePatients(config, g);
        log(QStringLiteral("%1 patients written in %2 s")
                .arg(o.patients)
                .arg(double(t.elapsed()) / 1000.0, 0, 'f', 1));
    }
    log(QStringLiteral("Demo workspace ready in %1").arg(home));
}

}  // namespace tolmar
