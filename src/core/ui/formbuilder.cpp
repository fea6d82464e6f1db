#include "core/ui/formbuilder.h"

#include "core/formats.h"
#include "core/listentry.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableView>
#include <QVBoxLayout>

namespace tolmar::ui {

namespace {
// Below any date a desk records; the box shows blank while it holds this.
const QDate kBlankDate(1753, 1, 1);
}  // namespace

FormBuilder::FormBuilder(QWidget* owner) : m_owner(owner), m_root(new QVBoxLayout(owner)) {}

FormBuilder::FormBuilder(QWidget* owner, QVBoxLayout* into) : m_owner(owner), m_root(into) {}

QGroupBox* FormBuilder::section(const QString& title, const QString& name)
{
    m_buttons = nullptr;
    if (title.isEmpty()) {
        m_band = nullptr;
        m_fields = new QFormLayout;
        m_root->addLayout(m_fields);
        return nullptr;
    }
    auto* box = new QGroupBox(title, m_owner);
    if (!name.isEmpty())
        box->setObjectName(name);
    m_fields = new QFormLayout(box);
    if (m_band)
        m_band->addWidget(box, 1, Qt::AlignTop);
    else
        m_root->addWidget(box);
    return box;
}

void FormBuilder::sideBySide()
{
    m_band = new QHBoxLayout;
    m_root->addLayout(m_band);
}

QFormLayout* FormBuilder::fields()
{
    if (!m_fields)
        section();
    m_buttons = nullptr;
    return m_fields;
}

QHBoxLayout* FormBuilder::buttons()
{
    if (!m_buttons) {
        m_buttons = new QHBoxLayout;
        m_buttons->addStretch(1);
        m_root->addLayout(m_buttons);
        m_band = nullptr;
        // Fields after a button row start a section of their own.
        m_fields = nullptr;
    }
    return m_buttons;
}

QWidget* FormBuilder::field(QWidget* control, const QString& name, const QString& label)
{
    control->setObjectName(name);
    if (label.isEmpty()) {
        fields()->addRow(control);
    } else {
        auto* caption = new QLabel(label, m_owner);
        caption->setObjectName(QStringLiteral("lbl_") + name);
        caption->setBuddy(control);
        fields()->addRow(caption, control);
    }
    return control;
}

void FormBuilder::row(QLabel* caption, QWidget* control)
{
    caption->setBuddy(control);
    fields()->addRow(caption, control);
}

QLineEdit* FormBuilder::text(const QString& name, const QString& label, LetterCase letterCase)
{
    auto* edit = new QLineEdit(m_owner);
    if (letterCase == LetterCase::Upper)
        forceUpperCase(edit);
    field(edit, name, label);
    return edit;
}

QLineEdit* FormBuilder::password(const QString& name, const QString& label, int maxLength)
{
    QLineEdit* edit = text(name, label);
    // Qt gives a masked box no copy, cut or drag; the context menu's entries follow suit.
    edit->setEchoMode(QLineEdit::Password);
    edit->setMaxLength(maxLength);
    edit->setInputMethodHints(Qt::ImhHiddenText | Qt::ImhSensitiveData |
                              Qt::ImhNoPredictiveText);
    return edit;
}

QComboBox* FormBuilder::combo(const QString& name, const QString& label, bool editable)
{
    auto* box = new QComboBox(m_owner);
    box->setEditable(editable);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(24);
    field(box, name, label);
    return box;
}

QDateEdit* FormBuilder::date(const QString& name, const QString& label)
{
    auto* edit = new QDateEdit(m_owner);
    edit->setCalendarPopup(true);
    edit->setDisplayFormat(fmt::kShortDate);
    field(edit, name, label);
    return edit;
}

QDateEdit* FormBuilder::optionalDate(const QString& name, const QString& label)
{
    QDateEdit* edit = date(name, label);
    edit->setMinimumDate(kBlankDate);
    edit->setSpecialValueText(QStringLiteral(" "));
    setBlank(edit);
    return edit;
}

QCheckBox* FormBuilder::check(const QString& name, const QString& caption)
{
    auto* box = new QCheckBox(caption, m_owner);
    field(box, name, QString());
    return box;
}

QLabel* FormBuilder::label(const QString& name, const QString& caption)
{
    auto* l = new QLabel(caption, m_owner);
    field(l, name, QString());
    return l;
}

QTableView* FormBuilder::grid(const QString& name)
{
    auto* view = new QTableView(m_owner);
    view->setObjectName(name);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setAlternatingRowColors(true);
    view->verticalHeader()->setDefaultSectionSize(view->fontMetrics().height() + 6);
    view->verticalHeader()->hide();
    view->horizontalHeader()->setStretchLastSection(true);
    m_root->addWidget(view, 1);
    m_fields = nullptr;
    m_buttons = nullptr;
    m_band = nullptr;
    return view;
}

QPushButton* FormBuilder::button(const QString& name, const QString& caption)
{
    auto* b = new QPushButton(caption, m_owner);
    b->setObjectName(name);
    b->setAutoDefault(false);
    buttons()->addWidget(b);
    return b;
}

void forceUpperCase(QLineEdit* edit)
{
    QObject::connect(edit, &QLineEdit::textEdited, edit, [edit](const QString& t) {
        const QString upper = t.toUpper();
        if (upper == t)
            return;
        const int pos = edit->cursorPosition();
        edit->setText(upper);
        edit->setCursorPosition(pos);
    });
}

void setBlank(QDateEdit* edit) { edit->setDate(edit->minimumDate()); }

bool isBlank(const QDateEdit* edit)
{
    return !edit->specialValueText().isEmpty() && edit->date() == edit->minimumDate();
}

QDate dateOf(const QDateEdit* edit) { return isBlank(edit) ? QDate() : edit->date(); }

void setDateOrBlank(QDateEdit* edit, const QDate& d)
{
    if (d.isValid() && d > edit->minimumDate())
        edit->setDate(d);
    else
        setBlank(edit);
}

QString currentKey(const QComboBox* box)
{
    return box->currentIndex() < 0 && !box->isEditable() ? QString()
                                                          : listentry::key(box->currentText());
}

void fillQuietly(QComboBox* box, const QStringList& items)
{
    const QSignalBlocker quiet(box);
    box->clear();
    box->addItems(items);
    box->setCurrentIndex(-1);
}

int chooseQuietly(QComboBox* box, const QString& text)
{
    const QSignalBlocker quiet(box);
    box->setCurrentIndex(text.isEmpty() ? -1 : box->findText(text));
    return box->currentIndex();
}

int chooseKeyQuietly(QComboBox* box, const QString& key)
{
    const QSignalBlocker quiet(box);
    for (int i = 0; i < box->count(); ++i)
        if (listentry::key(box->itemText(i)).trimmed() == key.trimmed()) {
            box->setCurrentIndex(i);
            return i;
        }
    box->setCurrentIndex(-1);
    return -1;
}

void fitColumns(QTableView* grid, int maxWidth)
{
    grid->resizeColumnsToContents();
    if (!grid->model())
        return;
    for (int c = 0; c < grid->model()->columnCount(); ++c)
        if (grid->columnWidth(c) > maxWidth)
            grid->setColumnWidth(c, maxWidth);
}

}  // namespace tolmar::ui
