// Fills a fresh database with N synthetic patients and says how long it took, beside the
// time of a small baseline run measured the same way in the same process.
//
//   bench_generate [N] [sqlite|postgres]      (PostgreSQL: TOLMAR_TEST_PG=host:port)

#include "core/demoworkspace.h"
#include "core/installation.h"
#include "patients/patientgenerator.h"
#include "platform/db.h"
#include "platform/schema.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <cstdio>

using namespace tolmar;

namespace {

struct Target {
    db::ServerConfig config;
    QString dropName;  // PostgreSQL database to drop afterwards
};

Target freshTarget(const QString& backend, const QString& tag, QTemporaryDir& dir)
{
    Target t;
    if (backend == QLatin1String("postgres")) {
        const QString pg = qEnvironmentVariable("TOLMAR_TEST_PG");
        if (pg.isEmpty())
            throw std::runtime_error("set TOLMAR_TEST_PG=host:port for PostgreSQL");
        t.dropName = QStringLiteral("tolmar_bench_%1_%2").arg(tag).arg(QCoreApplication::applicationPid());
        t.config = db::ServerConfig::fromServerName(pg + QLatin1Char('/') + t.dropName);
    } else {
        t.config = db::ServerConfig::fromServerName(QStringLiteral("sqlite:") +
                                                    dir.filePath(tag));
    }
    db::SchemaMigrator m(t.config);
    m.createDatabases();
    install::migrateWithDefaults(m, 0);
    writeDemoData(t.config);
    return t;
}

void drop(const Target& t)
{
    if (t.dropName.isEmpty())
        return;
    db::Connection admin(db::ServerConfig::fromServerName(qEnvironmentVariable("TOLMAR_TEST_PG") +
                                                          QStringLiteral("/postgres")),
                         db::Database::Hospital);
    admin.execScript(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(t.dropName));
}

double timeGenerate(const Target& t, qint64 n)
{
    patients::GeneratorOptions o;
    o.count = n;
    o.progress = [](qint64 k) {
        std::fprintf(stderr, "\r  %lld", static_cast<long long>(k));
        std::fflush(stderr);
    };
    QElapsedTimer timer;
    timer.start();
    patients::generatePatients(t.config, o);
    std::fprintf(stderr, "\n");
    return double(timer.nsecsElapsed()) / 1e9;
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const qint64 n = args.size() > 1 ? args[1].toLongLong() : 1000000;
    const QString backend = args.size() > 2 ? args[2] : QStringLiteral("sqlite");
    QTemporaryDir dir;
    try {
        const qint64 base = 10000;
        Target small = freshTarget(backend, QStringLiteral("base"), dir);
        const double tb = timeGenerate(small, base);
        drop(small);
        Target big = freshTarget(backend, QStringLiteral("big"), dir);
        const double tn = timeGenerate(big, n);
        drop(big);
        std::printf("backend %s\n", backend.toUtf8().constData());
        std::printf("baseline %lld patients: %.2f s (%.0f rows/s)\n",
                    static_cast<long long>(base), tb, base / tb);
        std::printf("%lld patients: %.1f s (%.0f rows/s), ratio to baseline rate %.2f\n",
                    static_cast<long long>(n), tn, n / tn, (n / tn) / (base / tb));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "failed: %s\n", e.what());
        return 1;
    }
    return 0;
}
