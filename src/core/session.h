#pragma once
// The one session record of a run: who is working, where the databases are, the server's
// clock, and every application default as read at start or at "Reload Defaults".

#include "platform/db.h"

#include <QDate>
#include <QDateTime>
#include <QMap>
#include <QString>

#include <memory>

namespace tolmar {

inline constexpr int kVersionMajor = 21;
inline constexpr int kVersionMinor = 0;
inline constexpr int kVersionRevision = 78;
inline const QString kLoginRole = QStringLiteral("RECORDS");
inline constexpr qint16 kModuleNumber = 3;

// Values of the AppDefaults table. The initial values are what a first run holds for keys
// that are never read (SendFrom while SendSMS is not "YES", the posting keys while
// AcctPostOn is false, the mail keys while mail is off).
struct AppDefaults {
    int PVT_CONFEE_SNO = 0;
    int PVT_REGFEE_SNO = 0;
    QString PRIVATE;
    QString AUTO_CARD_NO = QStringLiteral("YES");
    QString PIXLOC = QStringLiteral("DB");
    QString Coy_Code = QStringLiteral("SHORT");
    QString SendSMS = QStringLiteral("NO");
    QString SendFrom;
    QString Revtype_Consult = QStringLiteral("CONSULTATION");
    QString CoyID = QStringLiteral("0001");
    bool AcctPostOn = false;
    QDate AcctPostLastPeriodCloseDate;
    QString Acct_Receivable;
    QString AcctPostBeyondCurrentCalendarMonth = QStringLiteral("NO");
    QString AcctPostBelowLastPeriodClose = QStringLiteral("NO");
    QString LockOldVersion = QStringLiteral("NO");
    QString AppLocation = QStringLiteral("Lagos");
    QString LockAttendanceForInPatients = QStringLiteral("YES");
    QString LockMultipleAttendnace = QStringLiteral("YES");
    QString CallDefaults = QStringLiteral("HOURLY");
    QString shutDown = QStringLiteral("NO");
    QString SearchValue = QStringLiteral("20");
    QString EnableDOBExport = QStringLiteral("NO");
    int SearchWaitTime = 3000;
    QString TimeLineVersion = QStringLiteral("OLD");
    QString Clinic_PhoneNo;
    QString Clinic_Period = QStringLiteral("Between 10am - 3pm");
    QString Apologies;
    QString CalcDebtByPNo = QStringLiteral("YES");
    QString Admission_Limit_Exists = QStringLiteral("YES");
    QString App_Location_Change = QStringLiteral("NO");
    QString Database_Upgraded = QStringLiteral("NO");
    QString Show_Diagnosis_In_Con_Hist_Page = QStringLiteral("YES");
    QString Show_New_Con_Hist_Page = QStringLiteral("YES");
    QString Assign_Doctors_to_Consulting_Rooms = QStringLiteral("NO");
    QString Assign_Patients_to_Doctors = QStringLiteral("YES");
    QString Private_Client_Only = QStringLiteral("NO");
    QString Intercept_HMO_Treatment = QStringLiteral("YES");
    QString Mail_Activated = QStringLiteral("No");
    QString Mail_Server;
    QString Mail_UserFrom;
    QString Mail_Password;
    QString Mail_Client;
    int Mail_SmtpPort = 8889;
    QString Mail_Subject = QStringLiteral("Client Mail");

    // Flags are the exact text "YES"; anything else is no.
    static bool isYes(const QString& v) { return v == QLatin1String("YES"); }
    bool mailActivated() const { return Mail_Activated == QLatin1String("Yes"); }
};

struct Session {
    // Where the databases are.
    QString serverName;  // from made.sys, "SERVER" when it gave none
    QString serverHost;  // the server name up to its first backslash
    QString hospitalNo;  // HNO of made.sys
    db::ServerConfig server;
    QMap<db::Database, QString> connectionStrings;  // descriptive; never holds a password

    // Who is working.
    QString loginRole = kLoginRole;
    qint16 moduleNumber = kModuleNumber;
    QString userName;
    QString fullName;
    QString empID;
    QString hospID;
    QString hospitalName;
    QString computerName;
    QString windowsUser;

    // Where files go.
    QString patientsShare;
    QString reportsDir;

    // The server's clock, as last refreshed.
    QDateTime serverDateTime;
    QDate serverDate;
    QString serverDateText;  // short date form
    QString serverTimeText;  // short time form

    // Working state shared by screens.
    QString lastIdentifier;
    QString currentPNo;
    QString currentPatientName;
    // What frmRenew hands back to the screen that opened it with the tag "REG" or
    // "RECORDS", once a renewal went through: whose card, its new expiry date, and the flag
    // that has the opener's next save bill the renewal fee. The opener takes them on return
    // and clears them with its own save or clearFields; the menu's renewal sets none.
    QString renewedPNo;
    QDate renewedExpiryDate;
    bool CardRenewedFlag = false;
    bool notificationFlag = false;
    bool newWorkFlag = false;
    bool debtShown = false;
    double pendingFee = 0;
    // The instant fee picked on frmInstantFee, waiting for the next attendance's bill.
    bool instantFeePending = false;
    QString instantFeeItem;
    // The patient's balance brought forward, as the debt routine last computed it.
    double currentBalance = 0;
    // The date and time a clinic-date picker chose for an appointment.
    QDate apptDate;
    QString apptTime;

    // The coded diagnoses (vwICD), read once a run and shared by every screen that needs
    // them (core/diagnoses.h).
    std::shared_ptr<const db::Result> diagnosisList;

    // The activity row of this run.
    int activitySNo = 0;
    bool autoLogoff = false;

    AppDefaults defaults;
};

}  // namespace tolmar
