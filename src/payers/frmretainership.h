#pragma once
// "Company Information": the payers, with their amounts and posting account.

#include "platform/db.h"

#include <QVariantMap>
#include <QWidget>

#include <memory>

class QAbstractItemModel;
class QComboBox;
class QLineEdit;
class QPushButton;
class QTableView;

namespace tolmar {

class AppContext;

class frmRetainership : public QWidget {
    Q_OBJECT
public:
    frmRetainership(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

    enum class Mode { View, Add, Edit };
    Mode mode() const { return m_mode; }

public slots:
    void fillGrid();

private:
    void setMode(Mode mode);
    void clearFields();
    void requirePickedRow(const QString& action) const;
    void beginEdit();
    void save();
    void removeCurrent();
    void exportList();
    void chooseAccount();
    QString currentCell(const QString& column) const;

    // The grid reads on a connection of its own: on SQLite a grid that has not fetched
    // all its rows holds a read snapshot, and the commands' reads must not see through it.
    AppContext& m_ctx;
    QLineEdit* m_name;
    QComboBox* m_client;
    QLineEdit* m_contact;
    QLineEdit* m_address;
    QLineEdit* m_phone;
    QLineEdit* m_email;
    QComboBox* m_active;
    QComboBox* m_monthEnd;
    QLineEdit* m_con;
    QLineEdit* m_reg;
    QLineEdit* m_renew;
    QLineEdit* m_acctNo;
    QPushButton* m_accts;
    QLineEdit* m_search;
    QTableView* m_grid;
    QAbstractItemModel* m_model = nullptr;
    QPushButton* m_add;
    QPushButton* m_edit;
    QPushButton* m_save;
    QPushButton* m_delete;
    QPushButton* m_cancel;
    Mode m_mode = Mode::View;
    QString m_editing;  // retainID of the client being edited
};

}  // namespace tolmar
