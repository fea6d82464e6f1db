#pragma once
// The set-up screens of the clinics: consulting rooms, clinics, clinic days and the
// attendance items. Each is a list with its fields; the rules live in clinicsetup.h.

#include "core/ui/listeditscreen.h"

#include <QVariantMap>

class QComboBox;
class QLineEdit;
class QListWidget;

namespace tolmar {

class frmConRoom : public ui::ListEditScreen {
    Q_OBJECT
public:
    frmConRoom(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

protected:
    QAbstractItemModel* listModel(QObject* parent) override;
    void loadRow() override;
    void clearFields() override;
    QString saveRow(const QString& oldKey) override;
    void removeRow(const QString& key) override;

private:
    QLineEdit* m_txtID;
    QLineEdit* m_txtLocation;
};

class frmClinicTypes : public ui::ListEditScreen {
    Q_OBJECT
public:
    frmClinicTypes(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

protected:
    QAbstractItemModel* listModel(QObject* parent) override;
    void loadRow() override;
    void clearFields() override;
    QString saveRow(const QString& oldKey) override;
    void removeRow(const QString& key) override;

private:
    QLineEdit* m_txtName;
    QLineEdit* m_txtConFee;
    QLineEdit* m_txtRegFee;
    QLineEdit* m_txtDesig;
    QComboBox* m_cboRef;
};

class frmClinicDays : public ui::ListEditScreen {
    Q_OBJECT
public:
    frmClinicDays(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

protected:
    QAbstractItemModel* listModel(QObject* parent) override;
    void loadRow() override;
    void clearFields() override;
    QString saveRow(const QString& oldKey) override;
    void removeRow(const QString& key) override;
    QString deleteQuestion() const override;

private:
    QComboBox* m_cboCon;
    QListWidget* m_lstDays;
    QLineEdit* m_txtTime;
    QLineEdit* m_txtCon;
};

class frmAttendItems : public ui::ListEditScreen {
    Q_OBJECT
public:
    frmAttendItems(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

protected:
    QAbstractItemModel* listModel(QObject* parent) override;
    void loadRow() override;
    void clearFields() override;
    QString saveRow(const QString& oldKey) override;
    void removeRow(const QString& key) override;

private:
    QLineEdit* m_txtName;
};

}  // namespace tolmar
