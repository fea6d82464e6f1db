#pragma once
// The three price-list screens ("Drugs", "Investigations", "Services"): one screen over a
// TariffKind, registered under the three names.

#include "platform/db.h"

#include <QVariantMap>
#include <QWidget>

#include <memory>

class QAbstractItemModel;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;

namespace tolmar {

class AppContext;
class PriceCellModel;
class TariffList;
struct TariffKind;

class TariffPriceScreen : public QWidget {
    Q_OBJECT
public:
    TariffPriceScreen(AppContext& ctx, const TariffKind& kind, QWidget* parent = nullptr);
    ~TariffPriceScreen() override;

    bool editing() const { return m_editing; }

public slots:
    void fillGridHMO();

private:
    void fillPayers();
    void fillSources();
    void ownTariffChanged();
    void payerChosen();
    void UseTariff();
    void search();
    void viewByCategory();
    void viewBulkItems();
    void save();
    void beginEdit();
    void clearFields();
    void EnableFields(bool editing);
    void showPriceInWords();
    bool cellPriceTyped(int row, const QString& price);
    void seekRow(qint64 sno);
    QString cell(int row, const QString& column) const;

    // The grid reads on a connection of its own: on SQLite a grid that has not fetched
    // all its rows holds a read snapshot, and the commands' reads must not see through it.
    AppContext& m_ctx;
    std::unique_ptr<TariffList> m_list;
    QString m_coyID;  // the payer whose list is shown
    QString m_coyName;
    bool m_editing = false;
    qint64 m_editSNo = 0;

    QGroupBox* m_template;
    QComboBox* m_hmo;
    QComboBox* m_own;
    QComboBox* m_use;
    QComboBox* m_pcent;
    QCheckBox* m_del;
    QCheckBox* m_show;
    QCheckBox* m_add;
    QGroupBox* m_price;
    QLineEdit* m_item;
    QLineEdit* m_priceText;
    QLabel* m_words;
    QComboBox* m_cap;
    QComboBox* m_val;
    QLabel* m_cat;
    QComboBox* m_view = nullptr;
    QLineEdit* m_invi = nullptr;
    QLineEdit* m_search;
    QLabel* m_title;
    QLabel* m_tariff;
    QTableView* m_grid;
    QAbstractItemModel* m_rows = nullptr;
    PriceCellModel* m_cells = nullptr;
    QPushButton* m_edit;
    QPushButton* m_save;
    QPushButton* m_cancel;
};

class frmDrugPriceHMO : public TariffPriceScreen {
    Q_OBJECT
public:
    frmDrugPriceHMO(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);
};

class frmLabPriceHMO : public TariffPriceScreen {
    Q_OBJECT
public:
    frmLabPriceHMO(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);
};

class frmServPriceHMO : public TariffPriceScreen {
    Q_OBJECT
public:
    frmServPriceHMO(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);
};

}  // namespace tolmar
