#include "payers/frmtariffprice.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/formats.h"
#include "core/listentry.h"
#include "core/numbertowords.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"
#include "payers/tariff.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleValidator>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIdentityProxyModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QTimer>

#include <algorithm>
#include <functional>

namespace tolmar {

// The price list as the grid shows it: money with two decimals, and a Price cell that can
// be typed into. What is typed goes to the screen, which asks and stores it; the model
// itself holds nothing.
class PriceCellModel : public QIdentityProxyModel {
public:
    using QIdentityProxyModel::QIdentityProxyModel;
    std::function<bool(int row, const QString& price)> onPriceTyped;

    int priceColumn() const { return grid::columnOf(sourceModel(), QStringLiteral("Price")); }

    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        Qt::ItemFlags f = QIdentityProxyModel::flags(index);
        if (index.column() == priceColumn())
            f |= Qt::ItemIsEditable;
        return f;
    }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (index.column() == priceColumn() && role == Qt::DisplayRole)
            return fmt::money(QIdentityProxyModel::data(index, Qt::EditRole).toDouble());
        if (index.column() == priceColumn() && role == Qt::TextAlignmentRole)
            return QVariant(Qt::AlignRight | Qt::AlignVCenter);
        return QIdentityProxyModel::data(index, role);
    }
    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        if (role != Qt::EditRole || index.column() != priceColumn() || !onPriceTyped)
            return false;
        return onPriceTyped(index.row(), value.toString());
    }
};

namespace {

// Digits and one "." only, as a price cell takes them.
class PriceCellDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                          const QModelIndex&) const override
    {
        auto* edit = new QLineEdit(parent);
        edit->setObjectName(QStringLiteral("txtPriceCell"));
        edit->setValidator(new QRegularExpressionValidator(
            QRegularExpression(QStringLiteral("^\\d*\\.?\\d*$")), edit));
        return edit;
    }
    void setEditorData(QWidget* editor, const QModelIndex& index) const override
    {
        static_cast<QLineEdit*>(editor)->setText(
            QString::number(index.data(Qt::EditRole).toDouble(), 'f', 2));
    }
};

QWidget* withSuffix(QWidget* control, const QString& suffix, QWidget* parent)
{
    auto* box = new QWidget(parent);
    auto* row = new QHBoxLayout(box);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(control, 1);
    row->addWidget(new QLabel(suffix, box));
    return box;
}

QString entry(const Payer& p)
{
    return listentry::make(p.name, p.coyID);
}

}  // namespace

TariffPriceScreen::TariffPriceScreen(AppContext& ctx, const TariffKind& kind, QWidget* parent)
    : QWidget(parent), m_ctx(ctx), m_list(std::make_unique<TariffList>(ctx, kind))
{
    setWindowTitle(kind.title);
    ui::FormBuilder f(this);
    // The two sections side by side leave the height to the price list.
    f.sideBySide();
    m_template =
        f.section(QStringLiteral("Create Tariff Template Section"), QStringLiteral("Frame2"));
    m_hmo = f.combo(QStringLiteral("cboHMO"), QStringLiteral("Template for"));
    m_own = f.combo(QStringLiteral("cboDrug"), QStringLiteral("Has Own Tariff?"));
    m_use = new QComboBox(this);
    m_use->setObjectName(QStringLiteral("cboUse"));
    f.field(withSuffix(m_use, QStringLiteral("Tariff"), this), QStringLiteral("fraUse"),
            QStringLiteral("Use"));
    m_pcent = new QComboBox(this);
    m_pcent->setObjectName(QStringLiteral("cboPCent"));
    m_pcent->setEditable(true);
    m_pcent->setInsertPolicy(QComboBox::NoInsert);
    f.field(withSuffix(m_pcent, QStringLiteral("%"), this), QStringLiteral("fraPCent"),
            QStringLiteral("Percentage"));
    m_del = f.check(QStringLiteral("chkDel"),
                    QStringLiteral("Delete Existing Tariff for this Company"));
    m_show = f.check(QStringLiteral("chkShow"), QStringLiteral("Show Clients without Tariff"));
    m_add = f.check(QStringLiteral("chkAdd"), QStringLiteral("Add Single Item"));

    m_price = f.section(QStringLiteral("Update Price Section"), QStringLiteral("Frame1"));
    m_item = f.text(QStringLiteral("txtDrug"), QStringLiteral("Item Name"));
    m_priceText = f.text(QStringLiteral("txtPrice"), QStringLiteral("Price"));
    auto* priceCheck = new QDoubleValidator(0, 1e12, 2, m_priceText);
    priceCheck->setNotation(QDoubleValidator::StandardNotation);
    m_priceText->setValidator(priceCheck);
    m_words = f.label(QStringLiteral("lblWord"), QString());
    m_words->setWordWrap(true);
    m_cap = f.combo(QStringLiteral("cboCap"), QStringLiteral("Capitated"));
    m_val = f.combo(QStringLiteral("cboVal"), QStringLiteral("Monetary Value"));
    m_cat = new QLabel(this);
    f.field(m_cat, QStringLiteral("lblCat"), QStringLiteral("Category"));

    m_edit = f.button(QStringLiteral("cmdEdit"), QStringLiteral("Edit"));
    m_save = f.button(QStringLiteral("OKButton"), QStringLiteral("Save"));
    m_cancel = f.button(QStringLiteral("cmdCancel"), QStringLiteral("Cancel"));
    auto* bulk = f.button(QStringLiteral("Command1"), QStringLiteral("View Bulk Items"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));

    f.section();
    if (kind.byCategory) {
        m_view = f.combo(QStringLiteral("cboView"), QStringLiteral("View by Category"));
        m_invi = f.text(QStringLiteral("txtInvi"), QString());
        m_invi->hide();
    }
    m_search = f.text(QStringLiteral("txtSearch"), QStringLiteral("Quick Search"));
    m_title = f.label(QStringLiteral("Label1"), QStringLiteral(" Tariff"));
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    m_tariff = new QLabel(QStringLiteral("NONE"), this);
    f.field(m_tariff, QStringLiteral("lblTariff"), QStringLiteral("Tariff Used:"));
    m_grid = f.grid(QStringLiteral("grdData"));
    m_grid->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                            QAbstractItemView::AnyKeyPressed);
    m_grid->setItemDelegate(new PriceCellDelegate(m_grid));
    resize(1100, 660);

    m_own->addItems({QStringLiteral("YES"), QStringLiteral("NO")});
    m_own->setCurrentIndex(-1);
    for (int p = 150; p >= 5; p -= 5)
        m_pcent->addItem(QString::number(p));
    m_pcent->setCurrentIndex(-1);
    m_cap->addItems({QStringLiteral("NO"), QStringLiteral("YES")});
    m_val->addItems(
        {QStringLiteral("FIXED"), QStringLiteral("NEGOTIATE"), QStringLiteral("RECEIPT")});

    connect(m_own, &QComboBox::currentIndexChanged, this, &TariffPriceScreen::ownTariffChanged);
    connect(m_hmo, &QComboBox::activated, this, &TariffPriceScreen::payerChosen);
    connect(m_show, &QCheckBox::toggled, this, &TariffPriceScreen::fillPayers);
    connect(m_add, &QCheckBox::toggled, this, [this] { EnableFields(false); });
    connect(m_priceText, &QLineEdit::textChanged, this, &TariffPriceScreen::showPriceInWords);
    connect(m_search, &QLineEdit::textEdited, this, &TariffPriceScreen::search);
    connect(m_edit, &QPushButton::clicked, this, &TariffPriceScreen::beginEdit);
    connect(m_save, &QPushButton::clicked, this, &TariffPriceScreen::save);
    connect(m_cancel, &QPushButton::clicked, this, &TariffPriceScreen::clearFields);
    connect(bulk, &QPushButton::clicked, this, &TariffPriceScreen::viewBulkItems);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    if (m_view)
        connect(m_view, &QComboBox::activated, this, &TariffPriceScreen::viewByCategory);

    runCommand(this, m_ctx, [this] {
        fillPayers();
        fillSources();
        if (m_view) {
            m_view->addItems(m_list->categories());
            m_view->setCurrentIndex(-1);
        }
    });
    ownTariffChanged();
    clearFields();
}

TariffPriceScreen::~TariffPriceScreen()
{
    // The cell view reads through the rows model: it goes first.
    delete m_cells;
    delete m_rows;
}

void TariffPriceScreen::fillPayers()
{
    runCommand(this, m_ctx, [this] {
        m_hmo->clear();
        for (const Payer& p : m_list->payers(m_show->isChecked()))
            m_hmo->addItem(entry(p));
        m_hmo->setCurrentIndex(-1);
    });
}

void TariffPriceScreen::fillSources()
{
    const QString current = m_use->currentText();
    m_use->clear();
    for (const Payer& p : m_list->listedPayers())
        m_use->addItem(entry(p));
    m_use->setCurrentIndex(m_use->findText(current));
}

void TariffPriceScreen::ownTariffChanged()
{
    // Only a copy of another list needs to know whose list and at what percentage.
    const bool copy = m_own->currentText() == QLatin1String("NO");
    for (const char* name : {"fraUse", "lbl_fraUse", "fraPCent", "lbl_fraPCent"})
        if (auto* w = findChild<QWidget*>(QString::fromLatin1(name)))
            w->setVisible(copy);
}

void TariffPriceScreen::payerChosen()
{
    m_coyID = ui::currentKey(m_hmo);
    m_coyName = listentry::text(m_hmo->currentText());
    m_title->setText(m_coyName + QStringLiteral(" Tariff"));
    m_search->clear();
    if (m_view)
        m_view->setCurrentIndex(-1);
    fillGridHMO();
}

void TariffPriceScreen::fillGridHMO()
{
    runCommand(this, m_ctx, [this] {
        const QString searchText = m_search->text().trimmed();
        const QString category = m_invi ? m_invi->text() : QString();
        QAbstractItemModel* oldRows = m_rows;
        PriceCellModel* oldCells = m_cells;
        m_rows = m_ctx.db().gridModel(m_list->gridSql(!searchText.isEmpty(), !category.isEmpty()),
                                    TariffList::gridParams(m_coyID, searchText, category), this);
        m_cells = new PriceCellModel(this);
        m_cells->setSourceModel(m_rows);
        m_cells->onPriceTyped = [this](int row, const QString& price) {
            return cellPriceTyped(row, price);
        };
        m_grid->setModel(m_cells);
        delete oldCells;
        delete oldRows;
        // Narrow enough that the price stands in sight beside the item's name.
        ui::fitColumns(m_grid, 220);
        const int item = grid::columnOf(m_cells, m_list->kind().viewItem);
        if (item >= 0) {
            m_grid->resizeColumnToContents(item);
            m_grid->setColumnWidth(item, std::min(m_grid->columnWidth(item), 300));
        }
        grid::hideColumns(m_grid, {QStringLiteral("SNO"), QStringLiteral("CoyID")});
        UseTariff();
    });
}

void TariffPriceScreen::UseTariff()
{
    m_tariff->setText(m_coyID.isEmpty() ? QStringLiteral("NONE") : m_list->tariffUsed(m_coyID));
}

QString TariffPriceScreen::cell(int row, const QString& column) const
{
    const int c = grid::columnOf(m_cells, column);
    return c < 0 ? QString() : m_cells->index(row, c).data(Qt::EditRole).toString();
}

void TariffPriceScreen::seekRow(qint64 sno)
{
    const int c = grid::columnOf(m_cells, QStringLiteral("SNO"));
    if (c < 0)
        return;
    for (int row = 0;; ++row) {
        while (row >= m_cells->rowCount() && m_cells->canFetchMore({}))
            m_cells->fetchMore({});
        if (row >= m_cells->rowCount())
            return;
        if (m_cells->index(row, c).data(Qt::EditRole).toLongLong() == sno) {
            m_grid->selectRow(row);
            m_grid->scrollTo(m_cells->index(row, c));
            return;
        }
    }
}

void TariffPriceScreen::search()
{
    if (m_coyID.isEmpty()) {
        m_search->clear();
        m_ctx.prompter().inform(m_list->kind().searchMessage, windowTitle());
        return;
    }
    fillGridHMO();
}

void TariffPriceScreen::viewByCategory()
{
    if (m_coyID.isEmpty()) {
        m_view->setCurrentIndex(-1);
        m_ctx.prompter().inform(QStringLiteral("Please specify HMO Company"), windowTitle());
        return;
    }
    m_invi->setText(m_view->currentText());
    fillGridHMO();
}

void TariffPriceScreen::viewBulkItems()
{
    if (m_coyID.isEmpty()) {
        m_ctx.prompter().inform(m_list->kind().searchMessage, windowTitle());
        return;
    }
    m_search->clear();
    if (m_view) {
        m_view->setCurrentIndex(-1);
        m_invi->clear();
    }
    fillGridHMO();
}

void TariffPriceScreen::showPriceInWords()
{
    bool ok = false;
    const double v = m_priceText->text().trimmed().toDouble(&ok);
    m_words->setText(ok && v >= 0 ? figToWrd().Num2String(v) : QString());
}

void TariffPriceScreen::EnableFields(bool editing)
{
    m_editing = editing;
    m_template->setEnabled(!editing);
    // The item and its price are typed for a price edit, or for a single item added.
    const bool typing = editing || m_add->isChecked();
    m_item->setReadOnly(!typing || editing);
    m_priceText->setReadOnly(!typing);
    m_cap->setEnabled(editing);
    m_val->setEnabled(editing);
    m_edit->setEnabled(!editing);
    m_cancel->setEnabled(editing);
    m_grid->setEnabled(!editing);
}

void TariffPriceScreen::clearFields()
{
    m_item->clear();
    m_priceText->clear();
    m_cat->clear();
    m_cap->setCurrentIndex(-1);
    m_val->setCurrentIndex(-1);
    m_editSNo = 0;
    EnableFields(false);
}

void TariffPriceScreen::beginEdit()
{
    const QModelIndex i = m_grid->currentIndex();
    if (!m_cells || !i.isValid()) {
        m_ctx.prompter().inform(QStringLiteral("No Item to Edit. Select a Company Tariff to "
                                               "Display Items to Edit"),
                                windowTitle());
        return;
    }
    const int row = i.row();
    m_editSNo = cell(row, QStringLiteral("SNO")).toLongLong();
    m_item->setText(cell(row, m_list->kind().viewItem));
    m_priceText->setText(cell(row, QStringLiteral("Price")));
    const QString cap = cell(row, QStringLiteral("Capitated")).trimmed();
    const QString status = cell(row, QStringLiteral("TariffStatus")).trimmed();
    m_cap->setCurrentText(cap.isEmpty() ? QStringLiteral("NO") : cap);
    m_val->setCurrentText(status.isEmpty() ? QStringLiteral("FIXED") : status);
    m_cat->setText(cell(row, QStringLiteral("Category")));
    EnableFields(true);
    m_priceText->setFocus();
    m_priceText->selectAll();
}

void TariffPriceScreen::save()
{
    if (m_editing) {
        const qint64 sno = m_editSNo;
        if (!runCommand(this, m_ctx, [&] {
                PriceEdit e;
                e.sno = sno;
                e.coyID = m_coyID;
                e.item = m_item->text();
                e.price = m_priceText->text();
                e.capitated = m_cap->currentText();
                e.tariffStatus = m_val->currentText();
                m_list->editPrice(e);
            }))
            return;
        clearFields();
        fillGridHMO();
        seekRow(sno);
        return;
    }
    TemplateOutcome outcome = TemplateOutcome::Cancelled;
    runCommand(this, m_ctx, [&] {
        TemplateRequest r;
        r.payerEntry = m_hmo->currentText();
        r.ownTariff = m_own->currentText();
        r.sourceEntry = m_use->currentText();
        r.percentage = m_pcent->currentText();
        r.deleteExisting = m_del->isChecked();
        r.singleItem = m_add->isChecked();
        r.item = m_item->text();
        r.price = m_priceText->text();
        outcome = m_list->saveTemplate(r);
    });
    if (outcome != TemplateOutcome::Saved && outcome != TemplateOutcome::Repriced)
        return;
    runCommand(this, m_ctx, [this] {
        const QString payer = m_hmo->currentText();
        payerChosen();
        fillSources();
        if (m_show->isChecked()) {
            fillPayers();
            m_hmo->setCurrentText(payer);
        }
    });
    m_del->setChecked(false);
    m_add->setChecked(false);
    clearFields();
}

bool TariffPriceScreen::cellPriceTyped(int row, const QString& price)
{
    bool stored = false;
    const qint64 sno = cell(row, QStringLiteral("SNO")).toLongLong();
    const QString item = cell(row, m_list->kind().viewItem);
    runCommand(this, m_ctx, [&] { stored = m_list->setCellPrice(sno, item, price); });
    if (stored) {
        // The grid is re-read once the view has finished with its editor.
        QTimer::singleShot(0, this, [this, sno] {
            fillGridHMO();
            seekRow(sno);
        });
    }
    return stored;
}


frmDrugPriceHMO::frmDrugPriceHMO(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : TariffPriceScreen(ctx, TariffKind::drugs(), parent)
{
}

frmLabPriceHMO::frmLabPriceHMO(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : TariffPriceScreen(ctx, TariffKind::investigations(), parent)
{
}

frmServPriceHMO::frmServPriceHMO(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : TariffPriceScreen(ctx, TariffKind::services(), parent)
{
}

TOLMAR_REGISTER_SCREEN(frmDrugPriceHMO)
TOLMAR_REGISTER_SCREEN(frmLabPriceHMO)
TOLMAR_REGISTER_SCREEN(frmServPriceHMO)

}  // namespace tolmar
