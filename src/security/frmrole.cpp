#include "security/frmrole.h"

#include "core/appcontext.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "security/roles.h"

#include <QAbstractItemModel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QStatusBar>
#include <QTableView>
#include <QVBoxLayout>

namespace tolmar {

namespace {

// Nine digits always fit the 32-bit id.
constexpr int kRoleIdDigits = 9;

bool isAsciiDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

}  // namespace

frmRole::frmRole(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Role Creation"));
    ui::FormBuilder f(this);
    m_id = f.text(QStringLiteral("txtRID"), QStringLiteral("Role ID:"));
    m_id->setMaxLength(kRoleIdDigits);
    // Keys are sifted below with a word in the status bar; this catches a paste.
    m_id->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]{0,%1}").arg(kRoleIdDigits)), m_id));
    m_name = f.text(QStringLiteral("txtRName"), QStringLiteral("Role Name:"));
    m_name->setMaxLength(50);
    m_grid = f.grid(QStringLiteral("DataGrid1"));
    m_submit = f.button(QStringLiteral("cmdSubmit"), QStringLiteral("&Save"));
    m_cancel = f.button(QStringLiteral("cmdCancel"), QStringLiteral("&Close"));
    m_status = new QStatusBar(this);
    m_status->setObjectName(QStringLiteral("StatusBar1"));
    m_status->setSizeGripEnabled(false);
    f.layout()->addWidget(m_status);
    resize(520, 420);

    for (QWidget* w : {static_cast<QWidget*>(m_id), static_cast<QWidget*>(m_name),
                       static_cast<QWidget*>(m_submit), static_cast<QWidget*>(m_cancel)})
        w->installEventFilter(this);
    auto fill = [this] {
        m_submit->setEnabled(!m_id->text().trimmed().isEmpty() &&
                             !m_name->text().trimmed().isEmpty());
    };
    connect(m_id, &QLineEdit::textChanged, this, fill);
    connect(m_name, &QLineEdit::textChanged, this, fill);
    connect(m_submit, &QPushButton::clicked, this, &frmRole::submit);
    connect(m_cancel, &QPushButton::clicked, this, &QWidget::close);
    fill();
    fillGrid();
}

void frmRole::hint(const QString& text) { m_status->showMessage(text); }

bool frmRole::eventFilter(QObject* watched, QEvent* event)
{
    const QString user = m_ctx.session().userName;
    switch (event->type()) {
    case QEvent::KeyPress: {
        if (watched != m_id)
            break;
        const QString typed = static_cast<QKeyEvent*>(event)->text();
        if (!typed.isEmpty() && typed.at(0).isPrint() && !isAsciiDigit(typed.at(0))) {
            hint(QStringLiteral("Numeric entries expected here."));
            return true;
        }
        break;
    }
    case QEvent::FocusIn:
        if (watched == m_id)
            hint(QStringLiteral("Accepting RoleID from %1...").arg(user));
        else if (watched == m_name)
            hint(QStringLiteral("Accepting Role Name from %1...").arg(user));
        break;
    case QEvent::Enter:
        if (watched == m_id)
            hint(QStringLiteral("Waiting for %1 to key in RoleID").arg(user));
        else if (watched == m_name)
            hint(QStringLiteral("Waiting to Accept new Role Name from %1...").arg(user));
        else if (watched == m_submit)
            hint(QStringLiteral("Ready to Submit New Role Profile."));
        else if (watched == m_cancel)
            hint(QStringLiteral("Click here to unload the form."));
        break;
    default: break;
    }
    return QWidget::eventFilter(watched, event);
}

void frmRole::fillGrid()
{
    QAbstractItemModel* old = m_grid->model();
    m_grid->setModel(security::Role(m_ctx).DisplayData(m_grid));
    delete old;
    ui::fitColumns(m_grid);
}

void frmRole::submit()
{
    security::Role role(m_ctx);
    role.setRoleID(m_id->text().trimmed().toInt());
    role.setRoleName(m_name->text().trimmed());
    // An id already on file is only logged; the grid shows the role as it stands.
    role.Submit();
    fillGrid();
    m_id->clear();
    m_name->clear();
}

void frmRole::closeEvent(QCloseEvent* event)
{
    // The rows go with the window: nothing of them lingers on a connection.
    if (QAbstractItemModel* m = m_grid->model()) {
        m_grid->setModel(nullptr);
        delete m;
    }
    QWidget::closeEvent(event);
}

TOLMAR_REGISTER_SCREEN(frmRole)

}  // namespace tolmar
