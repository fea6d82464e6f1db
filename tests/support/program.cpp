#include "program.h"

#include <QProcess>

namespace tolmar::test {

bool haveBinary() { return !qEnvironmentVariableIsEmpty("TOLMAR_BINARY"); }

Outcome runProgram(const QStringList& args, const QProcessEnvironment& extra)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    for (const QString& k : extra.keys()) {
        if (extra.value(k).isEmpty())
            env.remove(k);
        else
            env.insert(k, extra.value(k));
    }
    p.setProcessEnvironment(env);
    p.start(qEnvironmentVariable("TOLMAR_BINARY"), args);
    if (!p.waitForFinished(120000)) {
        p.kill();
        p.waitForFinished();
        return {};
    }
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromLocal8Bit(p.readAllStandardOutput()),
            QString::fromLocal8Bit(p.readAllStandardError())};
}

}  // namespace tolmar::test
