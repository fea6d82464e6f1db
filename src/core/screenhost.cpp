#include "core/screenhost.h"

#include <QDialog>
#include <QEventLoop>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QWidget>

namespace tolmar {

namespace {
QHash<QString, ScreenHost::Factory>& registry()
{
    static QHash<QString, ScreenHost::Factory> r;
    return r;
}
}  // namespace

void ScreenHost::registerFactory(const QString& name, Factory factory)
{
    registry().insert(name, std::move(factory));
}

bool ScreenHost::isRegistered(const QString& name) { return registry().contains(name); }

QWidget* ScreenHost::create(const QString& name, const QVariantMap& args)
{
    const auto it = registry().constFind(name);
    if (it == registry().constEnd())
        return nullptr;
    QWidget* w = (*it)(m_ctx, args);
    if (w->objectName().isEmpty())
        w->setObjectName(name);
    w->setAttribute(Qt::WA_DeleteOnClose);
    m_open.insert(name, w);
    return w;
}

QWidget* ScreenHost::open(const QString& name, const QVariantMap& args)
{
    if (QWidget* existing = find(name)) {
        if (auto* sub = qobject_cast<QMdiSubWindow*>(existing->parentWidget())) {
            sub->showNormal();
            if (m_area)
                m_area->setActiveSubWindow(sub);
        } else {
            existing->showNormal();
            existing->raise();
            existing->activateWindow();
        }
        return existing;
    }
    QWidget* w = create(name, args);
    if (!w)
        return nullptr;
    place(w);
    return w;
}

QWidget* ScreenHost::show(QWidget* screen)
{
    screen->setAttribute(Qt::WA_DeleteOnClose);
    place(screen);
    return screen;
}

void ScreenHost::place(QWidget* w)
{
    if (m_area && !qobject_cast<QDialog*>(w)) {
        QMdiSubWindow* sub = m_area->addSubWindow(w);
        sub->setAttribute(Qt::WA_DeleteOnClose);
        sub->setWindowTitle(w->windowTitle());
        w->show();
        sub->show();
        m_area->setActiveSubWindow(sub);
    } else {
        w->show();
    }
}

bool ScreenHost::openModal(const QString& name, const QVariantMap& args)
{
    QWidget* w = create(name, args);
    if (!w)
        return false;
    if (auto* dlg = qobject_cast<QDialog*>(w)) {
        dlg->exec();
        return true;
    }
    // A plain widget run modally: wait for it to close.
    QPointer<QWidget> guard(w);
    w->setWindowModality(Qt::ApplicationModal);
    w->show();
    QEventLoop loop;
    QObject::connect(w, &QObject::destroyed, &loop, &QEventLoop::quit);
    loop.exec();
    return true;
}

QWidget* ScreenHost::find(const QString& name) const
{
    const auto it = m_open.constFind(name);
    return it == m_open.constEnd() ? nullptr : it->data();
}

QWidget* ScreenHost::activeScreen() const
{
    if (!m_area)
        return nullptr;
    QMdiSubWindow* sub = m_area->activeSubWindow();
    if (!sub && !m_area->subWindowList().isEmpty())
        sub = m_area->currentSubWindow();
    return sub ? sub->widget() : nullptr;
}

}  // namespace tolmar
