#include "messaging/frmbirthday.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/formats.h"
#include "core/listentry.h"
#include "core/screenhost.h"
#include "core/sheetexport.h"
#include "core/ui/formbuilder.h"
#include "messaging/smscenter.h"
#include "core/ui/gridcells.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QDateEdit>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTimeEdit>
#include <QVBoxLayout>

namespace tolmar {

namespace {
// A date or time box reads blank at its minimum until the person picks a value.
const QTime kNoTime(0, 0);
}

frmBirthday::frmBirthday(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("SMS Center"));
    auto* root = new QVBoxLayout(this);
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tabSMS"));
    root->addWidget(m_tabs);

    // Birthdays, status and credit.
    auto* today = new QWidget;
    today->setObjectName(QStringLiteral("tabToday"));
    ui::FormBuilder t(today);
    m_show = t.label(QStringLiteral("lblShow"), QString());
    m_show->setStyleSheet(QStringLiteral("font-weight: bold; color: #1b4f9c;"));
    // The credit of each category, two to a row under a caption of its own: the amounts
    // that "View SMS Status" fills in never crowd a caption out of sight.
    auto* credit = new QGroupBox(QStringLiteral("SMS Credit"), today);
    auto* cg = new QGridLayout(credit);
    auto addCredit = [&](int at, const QString& caption, const QString& name) {
        const int row = at / 2;
        const int col = (at % 2) * 2;
        cg->addWidget(new QLabel(caption, credit), row, col);
        auto* l = new QLabel(QStringLiteral("N/A"), credit);
        l->setObjectName(name);
        l->setStyleSheet(QStringLiteral("font-weight: bold;"));
        l->setMinimumWidth(l->fontMetrics().horizontalAdvance(QStringLiteral("999,999,999.00")));
        cg->addWidget(l, row, col + 1);
        return l;
    };
    m_attend = addCredit(0, QStringLiteral("Attendance:"), QStringLiteral("lblAttnd"));
    m_appt = addCredit(1, QStringLiteral("Appointment:"), QStringLiteral("lblAppt"));
    m_birth = addCredit(2, QStringLiteral("Birthday:"), QStringLiteral("lblBirth"));
    m_promo = addCredit(3, QStringLiteral("Promo:"), QStringLiteral("lblPromo"));
    cg->setColumnStretch(4, 1);
    t.field(credit, QStringLiteral("fraCredit"), QString());
    m_gridTitle = t.label(QStringLiteral("lblGridTitle"), QString());
    m_grid = t.grid(QStringLiteral("grdData"));
    auto* birthdays = t.button(QStringLiteral("cmdBirthday"), QStringLiteral("View Birthday"));
    m_excel = t.button(QStringLiteral("cmdExcel"), QStringLiteral("Export to Excel"));
    auto* status = t.button(QStringLiteral("cmdSMS"), QStringLiteral("View SMS Status"));
    m_tabs->addTab(today, QStringLiteral("Birthdays && Status"));

    // Special messages to a group.
    auto* special = new QWidget;
    special->setObjectName(QStringLiteral("tabSpecial"));
    ui::FormBuilder s(special);
    m_people = s.combo(QStringLiteral("cboVehNo"), QStringLiteral("Patient Category"));
    auto* display = s.button(QStringLiteral("cmdDisplay"),
                             QStringLiteral("Display Patients that will Receive SMS"));
    s.section();
    m_total = new QLabel;
    m_total->setStyleSheet(QStringLiteral("font-weight: bold;"));
    s.field(m_total, QStringLiteral("lblTotalNum"), QStringLiteral("Recipients:"));
    m_recipientsTitle = s.label(QStringLiteral("lblDisplayTitle"), QString());
    m_recipients = s.grid(QStringLiteral("grdDisplay"));
    m_category = s.combo(QStringLiteral("cboCat"), QStringLiteral("Message Category"));
    m_date = s.date(QStringLiteral("dtDate"), QStringLiteral("Send Date"));
    m_time = new QTimeEdit;
    m_time->setDisplayFormat(fmt::kShortTime);
    s.field(m_time, QStringLiteral("dtTime"), QStringLiteral("Send Time"));
    m_message = new QPlainTextEdit;
    m_message->setMaximumHeight(90);
    s.field(m_message, QStringLiteral("txtMessage"), QStringLiteral("Message"));
    m_left = s.label(QStringLiteral("lblChars"), QString());
    auto* send = s.button(QStringLiteral("cmdSend"), QStringLiteral("Send to SMS Center"));
    m_tabs->addTab(special, QStringLiteral("Special Messages"));

    // Closed like every other screen, from a button of its own under both pages.
    ui::FormBuilder bottom(this, root);
    auto* close = bottom.button(QStringLiteral("cmdClose"), QStringLiteral("Close"));
    connect(close, &QPushButton::clicked, this, &QWidget::close);

    for (QDateEdit* d : {m_date}) {
        d->setMinimumDate(QDate(2000, 1, 1));
        d->setSpecialValueText(QStringLiteral(" "));
        d->setDate(d->minimumDate());
    }
    m_time->setMinimumTime(kNoTime);
    m_time->setSpecialValueText(QStringLiteral(" "));
    m_time->setTime(kNoTime);

    connect(birthdays, &QPushButton::clicked, this, &frmBirthday::viewBirthdays);
    connect(m_excel, &QPushButton::clicked, this, &frmBirthday::exportBirthdays);
    connect(status, &QPushButton::clicked, this, &frmBirthday::viewStatus);
    connect(display, &QPushButton::clicked, this, &frmBirthday::displayRecipients);
    connect(send, &QPushButton::clicked, this, &frmBirthday::sendToSmsCenter);
    connect(m_message, &QPlainTextEdit::textChanged, this, &frmBirthday::countCharacters);
    resize(900, 620);
    load();
    countCharacters();
}

void frmBirthday::showInGrid(QTableView* grid, QLabel* title, const QString& caption,
                             QAbstractItemModel* model)
{
    QAbstractItemModel* old = grid->model();
    grid->setModel(model);
    if (old && old != model)
        old->deleteLater();
    title->setText(caption);
    ui::fitColumns(grid);
}

void frmBirthday::load()
{
    runCommand(this, m_ctx, [this] {
        SmsCenter sms(m_ctx);
        m_category->clear();
        m_category->addItems(sms.messageCategories());
        m_category->setCurrentIndex(-1);
        m_people->clear();
        for (const auto& p : sms.peopleCategories())
            m_people->addItem(listentry::make(p.name, QString::number(p.sNo)));
        m_people->setCurrentIndex(-1);
        showInGrid(m_grid, m_gridTitle, QStringLiteral("Saved Special Messages"),
                   sms.savedSpecials(this));
        m_excel->setVisible(m_ctx.session().defaults.EnableDOBExport == QLatin1String("YES"));
        m_tabs->setTabEnabled(1, sms.maySendSpecial(m_ctx.session().userName));
    });
}

void frmBirthday::viewBirthdays()
{
    runCommand(this, m_ctx, [this] {
        QAbstractItemModel* m = SmsCenter(m_ctx).birthdays(this);
        if (!m) {
            m_show->setText(QStringLiteral("No Patient has Birthday Today"));
            return;
        }
        showInGrid(m_grid, m_gridTitle, QStringLiteral("Birthdays Today"), m);
        m_show->setText(QStringLiteral("Happy Birthday Today"));
    });
}

void frmBirthday::exportBirthdays()
{
    runCommand(this, m_ctx, [this] {
        const db::Result rows = SmsCenter(m_ctx).birthdaysForExport();
        if (rows.empty()) {
            m_ctx.prompter().inform(QStringLiteral("No Records between specified Dates"),
                                    windowTitle());
            return;
        }
        auto busy = m_ctx.prompter().busy();
        exportToSheet(m_ctx, rows);
    });
}

void frmBirthday::viewStatus()
{
    runCommand(this, m_ctx, [this] {
        SmsCenter sms(m_ctx);
        m_attend->setText(sms.balance(QStringLiteral("ATTEND")));
        m_appt->setText(sms.balance(QStringLiteral("APPT")));
        m_birth->setText(sms.balance(QStringLiteral("DOB_PAT")));
        m_promo->setText(sms.balance(QStringLiteral("PROMO")));
        QAbstractItemModel* m = sms.statusToday(this);
        if (!m) {
            m_show->setText(QStringLiteral("No SMS Sent Today"));
            return;
        }
        showInGrid(m_grid, m_gridTitle, QStringLiteral("SMS Status Today"), m);
        m_show->setText(QStringLiteral("SMS Status Today"));
    });
}

void frmBirthday::displayRecipients()
{
    runCommand(this, m_ctx, [this] {
        if (m_people->currentIndex() < 0)
            throw CheckFailed(QStringLiteral("Specify Patient Category"), QStringLiteral("cboVehNo"));
        auto busy = m_ctx.prompter().busy();
        const auto r = SmsCenter(m_ctx).recipients(ui::currentKey(m_people).toInt(), this);
        m_total->setText(r.total);
        showInGrid(m_recipients, m_recipientsTitle,
                   QStringLiteral("Patients that will Receive SMS"), r.model);
    });
}

void frmBirthday::sendToSmsCenter()
{
    runCommand(this, m_ctx, [this] {
        if (m_people->currentIndex() < 0)
            throw CheckFailed(QStringLiteral("Specify Patient Category"), QStringLiteral("cboVehNo"));
        if (m_category->currentIndex() < 0)
            throw CheckFailed(QStringLiteral("Specify Message Category"), QStringLiteral("cboCat"));
        if (m_date->date() == m_date->minimumDate())
            throw CheckFailed(QStringLiteral("Specify Send Date"), QStringLiteral("dtDate"));
        if (m_time->time() == kNoTime)
            throw CheckFailed(QStringLiteral("Specify Send Time"), QStringLiteral("dtTime"));
        if (m_message->toPlainText().trimmed().isEmpty())
            throw CheckFailed(QStringLiteral("Specify Message to Recipients"),
                              QStringLiteral("txtMessage"));
        QAbstractItemModel* grid = m_recipients->model();
        if (!grid || grid->rowCount() == 0)
            throw CheckFailed(QStringLiteral("No Recipients in the Grid to Receive message"),
                              QStringLiteral("grdDisplay"));
        if (!m_ctx.prompter().ask(QStringLiteral("Are you sure to Send Message to these Recipients"),
                                  QStringLiteral("Send")))
            return;
        auto busy = m_ctx.prompter().busy();
        SpecialMessage m;
        m.peopleCategory = ui::currentKey(m_people).toInt();
        m.peopleCategoryName = listentry::text(m_people->currentText());
        m.messageCategory = m_category->currentText();
        m.sendDate = m_date->date();
        m.sendTime = m_time->time();
        m.text = m_message->toPlainText();
        const int sent = SmsCenter(m_ctx).send(m, shownRecipients());
        m_ctx.prompter().inform(QStringLiteral("%1 Record successfully Sent to SMS Center").arg(sent),
                                windowTitle());
        showInGrid(m_grid, m_gridTitle, QStringLiteral("Saved Special Messages"),
                   SmsCenter(m_ctx).savedSpecials(this));
    });
}

std::vector<SmsCenter::Recipient> frmBirthday::shownRecipients() const
{
    QAbstractItemModel* grid = m_recipients->model();
    while (grid->canFetchMore({}))
        grid->fetchMore({});
    auto column = [grid](const char* caption) {
        return grid::columnOf(grid, QString::fromLatin1(caption));
    };
    const int name = column("FullName"), salutation = column("FullName2"),
              phone = column("PhoneNo"), code = column("SNo");
    auto cell = [grid](int row, int col) {
        return col < 0 ? QString() : grid->index(row, col).data(Qt::EditRole).toString();
    };
    std::vector<SmsCenter::Recipient> out;
    out.reserve(size_t(grid->rowCount()));
    for (int r = 0; r < grid->rowCount(); ++r)
        out.push_back({cell(r, name), cell(r, salutation), cell(r, phone), cell(r, code)});
    return out;
}

void frmBirthday::countCharacters()
{
    QString text = m_message->toPlainText();
    if (text.size() > kSmsMaxCharacters) {
        // Cut what was pasted past the limit, keeping the cursor at the end.
        text.truncate(kSmsMaxCharacters);
        const QSignalBlocker block(m_message);
        m_message->setPlainText(text);
        m_message->moveCursor(QTextCursor::End);
    }
    const int left = kSmsMaxCharacters - int(text.size());
    m_left->setText(left > 0 ? QStringLiteral("%1 Characters left").arg(left)
                             : QStringLiteral("Maximum Characters Reached!"));
}

TOLMAR_REGISTER_SCREEN(frmBirthday)

}  // namespace tolmar
