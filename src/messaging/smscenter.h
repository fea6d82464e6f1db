#pragma once
// What the SMS Center screen reads and writes: birthdays, today's status and credit, the
// groups of recipients, and special messages sent to a whole group.

#include "platform/db.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <QTime>

class QAbstractItemModel;
class QObject;

namespace tolmar {

class AppContext;

// How long a special message may be: three joined text messages.
inline constexpr int kSmsMaxCharacters = 459;

struct PeopleCategoryEntry {
    int sNo = 0;
    QString name;
};

struct SpecialMessage {
    int peopleCategory = 0;     // PeopleCategory.SNo
    QString peopleCategoryName;
    QString messageCategory;    // MessageCategory.CatName
    QDate sendDate;
    QTime sendTime;
    QString text;
};

class SmsCenter {
public:
    explicit SmsCenter(AppContext& ctx);

    QStringList messageCategories();
    std::vector<PeopleCategoryEntry> peopleCategories();
    bool maySendSpecial(const QString& userName);

    // Grid models over SmsCenter; owned by parent.
    QAbstractItemModel* savedSpecials(QObject* parent);
    QAbstractItemModel* birthdays(QObject* parent);  // nullptr when nobody has a birthday
    db::Result birthdaysForExport();
    // Today's messages per category: how many queued, how many sent.
    QAbstractItemModel* statusToday(QObject* parent);  // nullptr when none today
    // CurrBalance by category, "N/A" for a category with no account.
    QString balance(const QString& category);

    // The stored statements of a group: the rows (FullName, FullName2, PhoneNo, SNo) and
    // the count; the count is "N/A" when the group has no counting statement.
    struct Recipients {
        QAbstractItemModel* model = nullptr;
        QString total;
    };
    Recipients recipients(int peopleCategory, QObject* parent);

    // One member of a group as the grid listed it.
    struct Recipient {
        QString fullName;
        QString fullName2;  // the salutation the message opens with
        QString phone;
        QString code;       // the patient's number
    };
    // Saves the message under its two categories and queues it once for each recipient the
    // desk was shown, in one transaction; returns how many were queued.
    int send(const SpecialMessage& message, const std::vector<Recipient>& to);

private:
    QString statement(int peopleCategory, const char* column);
    AppContext& m_ctx;
};

}  // namespace tolmar
