#pragma once
// A desk with frmRecords open offscreen, its clock on the database's own date (today's
// visits are the database's today), and helpers that put a visit on the screen.

#include "registration/registrationfixture.h"

#include "clinical/attendance.h"
#include "clinical/frmrecords.h"


namespace tolmar::test {

class AttendanceTest : public RegistrationTest {
protected:
    // The date qryhVisitsForToday calls today.
    QDate databaseToday() const
    {
        return ws->scalar(ws->backend() == db::Backend::Sqlite
                              ? QStringLiteral("SELECT date('now', 'localtime')")
                              : QStringLiteral("SELECT CURRENT_DATE"))
            .toDate();
    }
    frmRecords& records(const QVariantMap& args = {})
    {
        desk->clock.setServer(QDateTime(databaseToday(), QTime(9, 30)));
        desk->startUp();
        rec = std::make_unique<frmRecords>(desk->ctx, args);
        rec->show();
        return *rec;
    }
    // Picks the patient in cboVehNo as the desk would from the search result.
    void pickPatient(const QString& pno)
    {
        QComboBox* box = combo(rec.get(), "cboVehNo");
        box->addItem(clinical::patientEntry(*ws->connect(), pno));
        box->setCurrentIndex(box->count() - 1);
    }
    void fillVisit(const QString& clinic = QStringLiteral("GENERAL"),
                   const QString& purpose = QStringLiteral("CONSULTATION"))
    {
        pick(rec.get(), "cboType", clinic);
        pick(rec.get(), "cboPurpose", purpose);
    }
    void save() { click(rec.get(), "OKButton"); }
    QString focused() const
    {
        return rec->focusWidget() ? rec->focusWidget()->objectName() : QString();
    }
    int count(const QString& sql, const db::Params& params = {}) const
    {
        return ws->scalar(sql, params).toInt();
    }
    std::unique_ptr<frmRecords> rec;
};

}  // namespace tolmar::test
