#pragma once
// Builds a screen's controls in code, the same way on every screen: each control carries
// its name as objectName and its caption as text, so that users, tests and the command
// handler (which puts the focus on a control by name) all find it by one name.
//
// Layout: a vertical stack of sections. A field section is a two-column form (label and
// control); a button row is right-aligned; a grid takes the spare height.

#include <QDate>
#include <QString>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QFormLayout;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLayout;
class QLineEdit;
class QPushButton;
class QTableView;
class QVBoxLayout;
class QWidget;

namespace tolmar::ui {

enum class LetterCase { AsTyped, Upper };

class FormBuilder {
public:
    // Lays out `owner` (which must not have a layout yet).
    explicit FormBuilder(QWidget* owner);
    // Lays out a page of a tab or a group that already belongs to the screen.
    FormBuilder(QWidget* owner, QVBoxLayout* into);

    QWidget* owner() const { return m_owner; }
    QVBoxLayout* layout() const { return m_root; }

    // Starts a new field section; with a title it is framed as a group box.
    QGroupBox* section(const QString& title = QString(), const QString& name = QString());
    // Framed sections from here on stand side by side in one band, until a button row, a
    // grid or an untitled section: what a screen wants the height for goes below them.
    void sideBySide();

    QLineEdit* text(const QString& name, const QString& label,
                    LetterCase letterCase = LetterCase::AsTyped);
    // A masked box: what is typed shows as dots and cannot be copied or dragged out.
    QLineEdit* password(const QString& name, const QString& label, int maxLength = 100);
    QComboBox* combo(const QString& name, const QString& label, bool editable = false);
    QDateEdit* date(const QString& name, const QString& label);
    // A date that may be left empty (date of birth, expiry): see setBlank().
    QDateEdit* optionalDate(const QString& name, const QString& label);
    QCheckBox* check(const QString& name, const QString& caption);
    QLabel* label(const QString& name, const QString& caption);
    // Any other control, named and labelled the same way.
    QWidget* field(QWidget* control, const QString& name, const QString& label);

    // A row whose caption is a control of its own (a screen may change its text).
    void row(QLabel* caption, QWidget* control);

    // A read-only grid that selects whole rows; it takes the spare height.
    QTableView* grid(const QString& name);

    // Buttons go to the current button row; a new row starts after any other control.
    QPushButton* button(const QString& name, const QString& caption);

private:
    QFormLayout* fields();
    QHBoxLayout* buttons();
    QWidget* m_owner;
    QVBoxLayout* m_root;
    QFormLayout* m_fields = nullptr;
    QHBoxLayout* m_buttons = nullptr;
    QHBoxLayout* m_band = nullptr;
};

// Text typed into the box turns to capitals as it is typed, keeping the cursor in place.
void forceUpperCase(QLineEdit* edit);

// An optional date box shows nothing while it holds its minimum date.
void setBlank(QDateEdit* edit);
bool isBlank(const QDateEdit* edit);
// The date shown, or an invalid date when the box is blank.
QDate dateOf(const QDateEdit* edit);
// Shows `d`, or blanks the box when `d` is invalid.
void setDateOrBlank(QDateEdit* edit, const QDate& d);

// The key of the current entry of a list box ("{text} [{key}]"); "" when none is chosen.
QString currentKey(const QComboBox* box);
// Fills a list box without telling anyone, nothing chosen.
void fillQuietly(QComboBox* box, const QStringList& items);
// Chooses the entry with this text, or the one whose key is `key`, without telling anyone;
// nothing is chosen when the list holds no such entry. Returns the index chosen.
int chooseQuietly(QComboBox* box, const QString& text);
int chooseKeyQuietly(QComboBox* box, const QString& key);

// Fits the grid's columns to their contents (bounded, so a long text cannot push the rest
// off the screen).
void fitColumns(QTableView* grid, int maxWidth = 320);

}  // namespace tolmar::ui
