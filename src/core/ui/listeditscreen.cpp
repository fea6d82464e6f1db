#include "core/ui/listeditscreen.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"

#include <QPushButton>
#include <QTableView>

namespace tolmar::ui {

ListEditScreen::ListEditScreen(AppContext& ctx, const QString& title, QWidget* parent)
    : QWidget(parent), m_ctx(ctx), m_form(new FormBuilder(this))
{
    setWindowTitle(title);
}

ListEditScreen::~ListEditScreen() { delete m_form; }

void ListEditScreen::finish(const QString& keyColumn, const QStringList& hidden)
{
    m_keyColumn = keyColumn;
    FormBuilder& f = *m_form;
    auto* add = f.button(QStringLiteral("cmdAdd"), QStringLiteral("New"));
    auto* edit = f.button(QStringLiteral("cmdEdit"), QStringLiteral("Edit"));
    auto* ok = f.button(QStringLiteral("OKButton"), QStringLiteral("Save"));
    auto* del = f.button(QStringLiteral("cmdDel"), QStringLiteral("Delete"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));
    m_list = f.grid(QStringLiteral("grdData"));
    connect(add, &QPushButton::clicked, this, &ListEditScreen::startNew);
    connect(edit, &QPushButton::clicked, this, &ListEditScreen::startEdit);
    connect(m_list, &QTableView::doubleClicked, this, &ListEditScreen::startEdit);
    connect(ok, &QPushButton::clicked, this, &ListEditScreen::save);
    connect(del, &QPushButton::clicked, this, &ListEditScreen::remove);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    m_hidden = hidden;
    resize(760, 520);
    fillList();
}

void ListEditScreen::fillList()
{
    runCommand(this, m_ctx, [this] { grid::replaceModel(m_list, listModel(m_list), m_hidden); });
}

QString ListEditScreen::currentKey() const
{
    return grid::currentText(m_list, m_keyColumn);
}

// Edit and Delete work on the row picked in the list: without one the desk is told what to
// pick, instead of a button that seems dead.
bool ListEditScreen::requirePicked()
{
    return runCommand(this, m_ctx, [this] {
        if (currentKey().isEmpty())
            throw CheckFailed(QStringLiteral("No Record selected. Select a row in the list first"),
                              QStringLiteral("grdData"));
    });
}

void ListEditScreen::startNew()
{
    m_oldKey.clear();
    clearFields();
}

void ListEditScreen::startEdit()
{
    if (!requirePicked())
        return;
    m_oldKey = currentKey();
    loadRow();
}

void ListEditScreen::save()
{
    QString done;
    if (!runCommand(this, m_ctx, [&] { done = saveRow(m_oldKey); }))
        return;
    m_ctx.prompter().inform(done, windowTitle());
    startNew();
    fillList();
}

QString ListEditScreen::deleteQuestion() const
{
    return QStringLiteral("Are you sure to Delete Record");
}

void ListEditScreen::remove()
{
    const QString key = currentKey();
    if (!requirePicked())
        return;
    if (!m_ctx.prompter().ask(deleteQuestion(), QStringLiteral("Delete")))
        return;
    if (runCommand(this, m_ctx, [&] { removeRow(key); })) {
        m_ctx.prompter().inform(QStringLiteral(" Record successfully deleted "), windowTitle());
        startNew();
        fillList();
    }
}

}  // namespace tolmar::ui
