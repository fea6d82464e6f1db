#include "core/mditolmar.h"

#include "core/appcontext.h"
#include "core/screenhost.h"

#include <QLabel>
#include <QMdiArea>
#include <QMenuBar>
#include <QStatusBar>

namespace tolmar {

MdiTolmar::MdiTolmar(AppContext& ctx, QWidget* parent) : QMainWindow(parent), m_ctx(ctx)
{
    setObjectName(QStringLiteral("MdiTolmar"));
    m_area = new QMdiArea(this);
    m_area->setObjectName(QStringLiteral("mdiArea"));
    m_area->setBackground(QColor(0x80, 0x80, 0x80));
    setCentralWidget(m_area);
    m_ctx.screens().setFrame(m_area);

    auto* file = menuBar()->addMenu(QStringLiteral("&File"));
    file->setObjectName(QStringLiteral("mnuFile"));
    QAction* exit = file->addAction(QStringLiteral("E&xit"), this, &QWidget::close);
    exit->setObjectName(QStringLiteral("mnuExit"));

    statusBar()->setObjectName(QStringLiteral("SbrTolmar"));
    m_rolePanel = new QLabel(this);
    m_rolePanel->setObjectName(QStringLiteral("SbrTolmarPanel1"));
    m_userPanel = new QLabel(this);
    m_userPanel->setObjectName(QStringLiteral("SbrTolmarPanel2"));
    statusBar()->addWidget(m_rolePanel);
    statusBar()->addWidget(m_userPanel, 1);
    resize(1200, 800);
    applySession();
}

MdiTolmar::~MdiTolmar() { m_ctx.screens().setFrame(nullptr); }

void MdiTolmar::applySession()
{
    const Session& s = m_ctx.session();
    setWindowTitle(QStringLiteral("%1 (Ver %2) : @%3")
                       .arg(s.loginRole)
                       .arg(kVersionMajor)
                       .arg(s.defaults.AppLocation));
    m_rolePanel->setText(s.loginRole);
    m_userPanel->setText(s.fullName);
}

}  // namespace tolmar
