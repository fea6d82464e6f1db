#pragma once
// Fills the patient table with synthetic people: demo workspaces and the scale benchmarks.
// Names, phones, payers and categories are plausible for a Lagos hospital; a few names
// carry an apostrophe or a letter outside ASCII, as real ones do.

#include "platform/db.h"

#include <functional>

namespace tolmar::patients {

struct GeneratorOptions {
    qint64 count = 300;
    QString pnoPrefix = QStringLiteral("001/");  // hospital number and "/"
    QString hospID = QStringLiteral("001");
    QDate today;           // the registration dates lie in the ten years before it
    quint32 seed = 20261123;
    int rowsPerStatement = 200;
    // Called now and then with the number written so far.
    std::function<void(qint64)> progress;
};

// Appends `count` patients after the highest PNo present and moves the PATIENT2 counter
// to the last of them. Payers and categories are taken from hRetainership and billingPrice.
// Returns the number written.
qint64 generatePatients(const db::ServerConfig& server, const GeneratorOptions& options);

}  // namespace tolmar::patients
