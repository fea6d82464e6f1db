// The registration road as the desk walks it: every screen opened from the main window,
// and the rows read at the end. Each hand-over here (a fee picked on one screen and billed
// by another, a balance computed by a save and shown by the main window, a date that an
// appointment needs) broke once while each half passed its own tests.
#include "mainwindow/mainwindowfixture.h"
#include "registration/registrationfixture.h"

#include "core/formats.h"
#include "patients/frmpatientsnew.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QListWidget>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class FrontDesk : public MainWindowTest {
protected:
    // "Patient Attendance / Registration" from the Activities menu, a new private patient
    // filled in.
    frmPatientsNew* newPatient(const QString& surname = QStringLiteral("ADEBAYO"))
    {
        if (!window)
            openDesk();
        action(QStringLiteral("mnuNreg"))->trigger();
        auto* s = qobject_cast<frmPatientsNew*>(desk->ctx.screens().find("frmPatientsNew"));
        EXPECT_NE(s, nullptr);
        if (s)
            fillNewPrivate(s, surname);
        return s;
    }
    // The main window as a front desk's laptop shows it.
    void openDesk()
    {
        open();
        window->resize(kDeskLaptop);
    }
    // The screen's own Close, and the pause a person's next click gives the frame to let
    // the screen go.
    void closeScreen(QWidget* s)
    {
        click(s, "CancelButton");
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    // "ANC FEE" on the strip, one item ticked, its Save pressed.
    void pickInstantFee(const QString& item)
    {
        child<QPushButton>(QStringLiteral("cmdFee"))->click();
        QWidget* fees = desk->ctx.screens().find(QStringLiteral("frmInstantFee"));
        ASSERT_NE(fees, nullptr);
        auto* list = fees->findChild<QListWidget*>(QStringLiteral("LstDate"));
        ASSERT_NE(list, nullptr);
        const auto found = list->findItems(item, Qt::MatchStartsWith);
        ASSERT_EQ(found.size(), 1);
        found.front()->setCheckState(Qt::Checked);
        click(fees, "cmdProcess");
    }
    void save(QWidget* s)
    {
        desk->prompter.answerYes();
        click(s, "OKButton");
    }
    db::Result lines(const QString& surname) const
    {
        return ws->connect()->query(
            QStringLiteral("SELECT b.drgName, b.Price, b.consultID, r.consultID AS visit "
                           "FROM billAccum b JOIN hPatients p ON p.PNo = b.PNo "
                           "LEFT JOIN hRecords r ON r.PNo = b.PNo "
                           "WHERE p.psurname = ? ORDER BY b.drgName"),
            {surname});
    }
    // The main window's own lblDebt; the registration screen has one by the same name.
    QLabel* debtPanel() const
    {
        auto* clock = child<QFrame>(QStringLiteral("Frame1"));
        return clock->findChild<QLabel*>(QStringLiteral("lblDebt"));
    }
};

TEST_P(FrontDesk, InstantFeePickedOnTheStripIsBilledOnceByTheSaveThatCommits)
{
    ws->exec(QStringLiteral("UPDATE hRetainership SET RegAmount = 0 WHERE retainID = '0001'"));
    struct Case {
        const char* what;
        bool firstSaveFails;
    };
    for (const Case c : {Case{"saved at once", false}, Case{"saved after a failed save", true}}) {
        SCOPED_TRACE(c.what);
        const QString surname = QLatin1String(c.firstSaveFails ? "OKONJO" : "ADEWALE");
        QWidget* s = newPatient(surname);
        ASSERT_NE(s, nullptr);
        pickInstantFee(QStringLiteral("MEDICAL REPORT"));
        EXPECT_TRUE(desk->prompter.saw(QStringLiteral("Item will be added to Bill")));
        saveScreenshot(window.get(), QStringLiteral("road-fee-picked"));
        if (c.firstSaveFails) {
            refuseTimelineRows(*ws, true);
            save(s);
            refuseTimelineRows(*ws, false);
            EXPECT_EQ(lines(surname).size(), 0u);
            EXPECT_TRUE(desk->ctx.session().instantFeePending) << "kept for the next Save";
        }
        save(s);
        const db::Result bill = lines(surname);
        QStringList items;
        for (const db::Row& r : bill.rows) {
            items << r.text(u"drgName");
            EXPECT_EQ(r.text(u"consultID"), r.text(u"visit")) << r.text(u"drgName").toStdString();
        }
        EXPECT_EQ(items, (QStringList{"ATTENDANCE", "MEDICAL REPORT", "REGISTRATION"}));
        EXPECT_DOUBLE_EQ(bill.rows.at(1).toDouble(u"Price"), 5000);
        EXPECT_FALSE(desk->ctx.session().instantFeePending);

        // The next patient of the desk is not charged for it again.
        const QString next = surname + QStringLiteral("NEXT");
        save(newPatient(next));
        EXPECT_EQ(lines(next).size(), 2u);
    }
}

TEST_P(FrontDesk, SavedPatientsBalanceFlashesOnTheMainWindowUntilTheDeskMovesOn)
{
    // The old patient comes back the same day.
    restartWith(QStringLiteral("LockMultipleAttendnace"), QStringLiteral("NO"));
    openDesk();
    QTimer* flash = timer(QStringLiteral("Timer2"));
    struct Case {
        const char* what;
        QString carryOver;  // typed into the debt box of a new patient; "" for an old one
        QString shown;
    };
    const std::vector<Case> cases{
        {"a new patient's carried-over debt", QStringLiteral("2500"),
         QStringLiteral("Debt: ") + fmt::money(2500)},
        {"nothing owed", QStringLiteral("0"), QStringLiteral("Debt:")},
        {"an old patient in credit", QString(), QStringLiteral("Credit: ") + fmt::money(1250.5)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        frmPatientsNew* s = newPatient(QStringLiteral("DEBTOR"));
        ASSERT_NE(s, nullptr);
        // Opening the screen, or starting a patient, never lights the panel by itself.
        EXPECT_EQ(debtPanel()->text(), QStringLiteral("Debt:"));
        EXPECT_FALSE(flash->isActive());
        if (c.carryOver.isEmpty()) {
            // The patient saved before comes back; the latest bill, private, left a credit.
            const QString pno =
                ws->scalar(QStringLiteral("SELECT MAX(PNo) FROM hPatients WHERE psurname = ?"),
                           {QStringLiteral("DEBTOR")})
                    .toString();
            ws->exec(QStringLiteral("INSERT INTO Billing (PNo, ClientID, AmountBilled, DebtBF, "
                                    "Discount, AmountPaid) VALUES (?, '0001', 1000, 0, 0, "
                                    "2250.5)"),
                     {pno});
            click(s, "cmdCancel");
            s->editVal(pno);
            click(s, "cmdEdit");
            pick(s, "cboClin", QStringLiteral("GENERAL"));
            pick(s, "cboPurpose", QStringLiteral("CONSULTATION"));
        } else {
            desk->prompter.answerInput(c.carryOver);
            QTest::mouseDClick(s->findChild<QLabel*>(QStringLiteral("lblDebt")), Qt::LeftButton);
        }
        save(s);
        saveScreenshot(window.get(), QStringLiteral("road-saved-%1").arg(&c - cases.data()));
        EXPECT_EQ(debtPanel()->text(), c.shown)
            << desk->prompter.informs().join(QStringLiteral(" / ")).toStdString();
        EXPECT_EQ(flash->isActive(), c.shown != QLatin1String("Debt:"));
        // Closing the screen quiets the panel.
        closeScreen(s);
        EXPECT_EQ(debtPanel()->text(), QStringLiteral("Debt:"));
        EXPECT_FALSE(flash->isActive());
    }
}

TEST_P(FrontDesk, AppointmentIsRefusedWithoutItsDateAndQueuedWithIt)
{
    QWidget* s = newPatient(QStringLiteral("BOOKED"));
    ASSERT_NE(s, nullptr);
    pick(s, "cboPurpose", QStringLiteral("APPOINTMENT"));
    desk->prompter.clear();
    save(s);
    EXPECT_EQ(desk->prompter.informs(), QStringList{QStringLiteral("Specify Appointment Date")});
    EXPECT_EQ(s->focusWidget(), s->findChild<QWidget*>(QStringLiteral("dtNext")));
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM happointment")).toInt(), 0);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hPatients WHERE psurname = ?"),
                         {QStringLiteral("BOOKED")})
                  .toInt(),
              0);

    const QDate day = today().addDays(1);
    dateBox(s, "dtNext")->setDate(day);
    saveScreenshot(window.get(), QStringLiteral("road-appointment"));
    save(s);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT ApptDate FROM happointment")).toDate(), day);
    const QString sms =
        ws->scalar(QStringLiteral("SELECT Message FROM MessageOut WHERE Remarks = 'APPOINTMENT'"),
                   {}, db::Database::SmsCenter)
            .toString();
    EXPECT_TRUE(sms.contains(QStringLiteral("Date: ") + fmt::shortDate(day)))
        << sms.toStdString();
}

TEST_P(FrontDesk, RenewCardBillsTheFeeOnceWithTheNextEditSaveWhetherOrNotTheCardWasRenewed)
{
    // The patient was registered this morning and comes back to another clinic.
    restartWith(QStringLiteral("LockMultipleAttendnace"), QStringLiteral("NO"));
    openDesk();
    for (const bool renew : {false, true}) {
        SCOPED_TRACE(renew ? "renewed" : "left without renewing");
        const QString surname = QLatin1String(renew ? "RENEWED" : "LAPSED");
        frmPatientsNew* s = newPatient(surname);
        ASSERT_NE(s, nullptr);
        save(s);
        const QString pno =
            ws->scalar(QStringLiteral("SELECT PNo FROM hPatients WHERE psurname = ?"), {surname})
                .toString();
        const QDate lapsed = today().addDays(-40);
        ws->exec(QStringLiteral("UPDATE hPatients SET expirydate = ? WHERE PNo = ?"),
                 {lapsed, pno});

        s->editVal(pno);
        click(s, "cmdEdit");
        desk->prompter.clear();
        pick(s, "cboClin", QStringLiteral("GENERAL"));
        EXPECT_EQ(desk->prompter.informs(),
                  QStringList{QStringLiteral("Patient's Card has Expired")});
        ASSERT_TRUE(test::child<QPushButton>(s, "cmdRenew")->isEnabled());

        // "Renew Card" opens the renewal screen over the desk and waits for it.
        QString shownPno;
        QTimer::singleShot(0, [&] {
            QWidget* renewal = QApplication::activeModalWidget();
            ASSERT_NE(renewal, nullptr);
            shownPno = edit(renewal, "txtNo")->text();
            if (renew) {
                desk->prompter.answerYes();
                click(renewal, "cmdRenew");
            }
            click(renewal, "cmdClose");
        });
        click(s, "cmdRenew");
        EXPECT_EQ(shownPno, pno);
        const QDate expiry = renew ? today().addYears(1) : lapsed;
        EXPECT_EQ(ui::dateOf(dateBox(s, "dtExpDate")), expiry);
        EXPECT_FALSE(desk->ctx.session().CardRenewedFlag) << "taken by the registration screen";

        if (renew) {
            pick(s, "cboClin", QStringLiteral("GENERAL"));  // the card is good again
            pick(s, "cboPurpose", QStringLiteral("CONSULTATION"));
        } else {
            test::child<QCheckBox>(s, "chkReg")->setChecked(false);
        }
        save(s);
        // A second edit save of the same patient bills nothing more.
        s->editVal(pno);
        click(s, "cmdEdit");
        test::child<QCheckBox>(s, "chkReg")->setChecked(false);
        save(s);

        EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM billAccum WHERE PNo = ? AND "
                                            "drgName = 'CARD RENEWAL FEE'"),
                             {pno})
                      .toInt(),
                  1);
        EXPECT_EQ(ws->scalar(QStringLiteral("SELECT expirydate FROM hPatients WHERE PNo = ?"),
                             {pno})
                      .toDate(),
                  expiry);
        EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hPatientsOldCardNoHist "
                                            "WHERE PNo = ?"),
                             {pno})
                      .toInt(),
                  renew ? 1 : 0);
        EXPECT_FALSE(desk->prompter.answersLeft());
        closeScreen(s);
    }
}

TOLMAR_INSTANTIATE_BACKENDS(FrontDesk);

}  // namespace
