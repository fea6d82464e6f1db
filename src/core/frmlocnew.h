#pragma once
// "Server Locations": the list-and-edit screen over the workstation's key.db.

#include <QDialog>
#include <QVariantMap>

class QLineEdit;
class QPushButton;
class QStandardItemModel;
class QTableView;

namespace tolmar {

class AppContext;

class frmLocNew : public QDialog {
    Q_OBJECT
public:
    frmLocNew(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

    enum class Mode { View, Add, Edit };
    Mode mode() const { return m_mode; }

public slots:
    void fillGrid();

private:
    void setMode(Mode mode);
    void beginEdit();
    void save();
    void removeCurrent();
    void closeScreen();
    QString currentCell(int column) const;

    AppContext& m_ctx;
    QTableView* m_grid;
    QStandardItemModel* m_model;
    QLineEdit* m_id;
    QLineEdit* m_name;
    QPushButton* m_add;
    QPushButton* m_edit;
    QPushButton* m_save;
    QPushButton* m_delete;
    QPushButton* m_cancel;
    QPushButton* m_refresh;
    Mode m_mode = Mode::View;
    QString m_oldName;
};

}  // namespace tolmar
