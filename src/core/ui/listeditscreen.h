#pragma once
// The shape of the small list screens (rooms, clinics, clinic days, items): fields above,
// New / Edit / Save / Delete / Close, and the list below. A double click on the list is
// Edit. The screen says what the list holds and how a row is loaded, saved and removed.

#include <QString>
#include <QStringList>
#include <QWidget>

class QAbstractItemModel;
class QPushButton;
class QTableView;

namespace tolmar {
class AppContext;
}

namespace tolmar::ui {

class FormBuilder;

class ListEditScreen : public QWidget {
    Q_OBJECT
public:
    ListEditScreen(AppContext& ctx, const QString& title, QWidget* parent);
    ~ListEditScreen() override;

public slots:
    void fillList();

protected:
    // The fields go here in the subclass's constructor; then finish() adds the rest.
    FormBuilder& form() { return *m_form; }
    void finish(const QString& keyColumn, const QStringList& hidden = {});

    virtual QAbstractItemModel* listModel(QObject* parent) = 0;
    virtual void loadRow() = 0;
    virtual void clearFields() = 0;
    // Writes the fields (oldKey empty: a new row) and returns the message for the desk.
    virtual QString saveRow(const QString& oldKey) = 0;
    virtual void removeRow(const QString& key) = 0;
    virtual QString deleteQuestion() const;

    AppContext& m_ctx;
    QTableView* m_list = nullptr;
    QString m_oldKey;  // the row being edited; empty while adding

private:
    void startNew();
    void startEdit();
    void save();
    void remove();
    QString currentKey() const;
    bool requirePicked();

    FormBuilder* m_form;
    QString m_keyColumn;
    QStringList m_hidden;
};

}  // namespace tolmar::ui
