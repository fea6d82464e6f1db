#pragma once
// "SMS Center": birthdays of the day, the state of today's messages and the credit left,
// and special messages sent to a whole group of patients.

#include "messaging/smscenter.h"

#include <QVariantMap>
#include <QWidget>

#include <vector>

class QAbstractItemModel;
class QComboBox;
class QDateEdit;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;
class QTableView;
class QTimeEdit;

namespace tolmar {

class AppContext;

class frmBirthday : public QWidget {
    Q_OBJECT
public:
    frmBirthday(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

private:
    void load();
    void viewBirthdays();
    void exportBirthdays();
    void viewStatus();
    void displayRecipients();
    void sendToSmsCenter();
    // The recipients as the grid lists them, every row fetched.
    std::vector<SmsCenter::Recipient> shownRecipients() const;
    void countCharacters();
    void showInGrid(QTableView* grid, QLabel* title, const QString& caption,
                    QAbstractItemModel* model);

    AppContext& m_ctx;
    QTabWidget* m_tabs;
    QTableView* m_grid;
    QLabel* m_gridTitle;
    QLabel* m_show;
    QLabel* m_attend;
    QLabel* m_appt;
    QLabel* m_birth;
    QLabel* m_promo;
    QPushButton* m_excel;
    QComboBox* m_people;
    QComboBox* m_category;
    QTableView* m_recipients;
    QLabel* m_recipientsTitle;
    QLabel* m_total;
    QDateEdit* m_date;
    QTimeEdit* m_time;
    QPlainTextEdit* m_message;
    QLabel* m_left;
};

}  // namespace tolmar
