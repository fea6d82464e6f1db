#pragma once
// What the main window's timers and helpers ask the database: referrals due today,
// admissions past their limit, the day's appointments and visits, and who may change the
// server location. UI-free; the window decides what to flash.

#include <QDate>
#include <QDateTime>
#include <QString>

namespace tolmar {

class AppContext;

// What the expired-admission watch tells the flashing of cmdExpired to do.
enum class ExpiredAdmissionSignal {
    Unchanged,  // no admission is past its limit: leave the flashing as it is
    Start,      // a patient of NHIS, PHIS or HMO has passed the admission limit
    Stop,       // only patients of other client kinds have
};

class MainWatch {
public:
    explicit MainWatch(AppContext& ctx) : m_ctx(ctx) {}

    // Same-day referrals that the reception has not yet acted on. The checks ask only
    // whether a row exists: every desk runs them each minute.
    bool sameDayReferralsWaiting(const QDate& serverDate);
    // Admissions whose limit has passed at `serverNow`; a stay without a limit counts.
    ExpiredAdmissionSignal expiredAdmissions(const QDateTime& serverNow);
    // Entries of the referral book for today that the reception has not acted on.
    bool referralBookDue(const QDate& serverDate);

    // Each adds its line to the caller's notice text when it finds rows.
    void verifyApptDate(QString& notice, const QDate& today);
    void verifyDueDelivery(QString& notice, const QDate& today);
    void verifyAdmissionWaitList(QString& notice);

private:
    AppContext& m_ctx;
};

// Appends a line to a notice text, one line per finding.
void addNoticeLine(QString& notice, const QString& line);

}  // namespace tolmar
