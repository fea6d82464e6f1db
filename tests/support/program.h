#pragma once
// The real program binary (TOLMAR_BINARY, set by CTest), run the way a script or the
// launcher runs it.

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace tolmar::test {

struct Outcome {
    int status = -1;  // -1: it crashed or did not end within two minutes
    QString out;
    QString err;
};

bool haveBinary();
// `env` entries are added to (or, with an empty value, removed from) this process's own.
Outcome runProgram(const QStringList& args, const QProcessEnvironment& env = {});

}  // namespace tolmar::test
