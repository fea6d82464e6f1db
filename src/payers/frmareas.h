#pragma once
// "Address Locations/Areas": the list of residential areas.

#include <QVariantMap>
#include <QWidget>

class QLineEdit;
class QListWidget;
class QPushButton;

namespace tolmar {

class AppContext;

class frmAreas : public QWidget {
    Q_OBJECT
public:
    frmAreas(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

public slots:
    void fillList();

private:
    void setEditing(bool on, const QString& oldName = QString());
    void save();
    void requirePickedArea(const QString& action) const;
    void removeCurrent();

    AppContext& m_ctx;
    QListWidget* m_list;
    QLineEdit* m_name;
    QPushButton* m_add;
    QPushButton* m_edit;
    QPushButton* m_save;
    QPushButton* m_delete;
    QPushButton* m_cancel;
    bool m_editing = false;
    QString m_oldName;  // the area being renamed; empty while adding
};

}  // namespace tolmar
