#pragma once
// "Find a Record": a patient looked up by the first letters of the surname or by the card
// number, to read the numbers off. It only shows; nothing is opened from it.

#include <QDialog>
#include <QVariantMap>

class QLineEdit;
class QTableView;

namespace tolmar {

class AppContext;

class frmFind : public QDialog {
    Q_OBJECT
public:
    frmFind(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void find(const QString& mode, const QString& text);

    AppContext& m_ctx;
    QLineEdit* m_txtName;
    QLineEdit* m_TxtID;
    QTableView* m_grid;
};

}  // namespace tolmar
