#pragma once
// "Server Location": pick one of the workstation's known servers and restart on it.

#include <QDialog>
#include <QVariantMap>

class QComboBox;

namespace tolmar {

class AppContext;

class frmLocIP : public QDialog {
    Q_OBJECT
public:
    frmLocIP(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

    // The address and name of the chosen entry; empty until one is chosen.
    const QString& locationAddress() const { return m_address; }
    const QString& locationName() const { return m_name; }

public slots:
    void reloadList();

private:
    void onSelected(int index);
    void connectToServer();
    AppContext& m_ctx;
    QComboBox* m_list;
    QString m_address;
    QString m_name;
};

}  // namespace tolmar
