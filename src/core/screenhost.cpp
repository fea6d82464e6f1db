#include "core/screenhost.h"

#include <QDialog>
#include <QEventLoop>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScreen>
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

QStringList ScreenHost::registeredNames()
{
    QStringList names = registry().keys();
    names.sort();
    return names;
}

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
    if (!m_area) {
        w->show();
        return;
    }
    if (qobject_cast<QDialog*>(w)) {
        adopt(w);
        w->show();
        return;
    }
    // The size the screen asked for, before the frame around it decides otherwise.
    const QSize wanted = w->testAttribute(Qt::WA_Resized) ? w->size() : w->sizeHint();
    QMdiSubWindow* sub = m_area->addSubWindow(w);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    sub->setWindowTitle(w->windowTitle());
    // A screen's own Close button closes the screen, not its frame: the frame goes with
    // it, or an empty titled window would stay behind in the work area.
    QPointer<QMdiSubWindow> frame(sub);
    QObject::connect(w, &QObject::destroyed, m_area, [frame] {
        if (frame)
            frame->deleteLater();
    });
    // Top-left, and no larger than what the desk can see: a screen opened half outside
    // the frame hides its captions and its command row.
    w->show();
    sub->show();
    const QSize frameMargins = sub->size() - w->size();
    const QSize room = m_area->viewport()->size();
    sub->resize((wanted + frameMargins).boundedTo(room).expandedTo(sub->minimumSizeHint()));
    sub->move(0, 0);
    m_area->setActiveSubWindow(sub);
}

void ScreenHost::adopt(QWidget* dialog)
{
    // Parented to the main window, a dialog opens centred over it and stays above it.
    if (m_area && !dialog->parentWidget())
        dialog->setParent(m_area->window(), dialog->windowFlags() | Qt::Dialog);
}

bool ScreenHost::openModal(const QString& name, const QVariantMap& args)
{
    QWidget* w = create(name, args);
    if (!w)
        return false;
    adopt(w);
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

void ScreenHost::centreOverFrame(QWidget* dialog) const
{
    const QWidget* anchor = m_area ? m_area->window() : nullptr;
    const QRect area = anchor ? anchor->frameGeometry()
                              : (dialog->screen() ? dialog->screen()->availableGeometry()
                                                  : QRect());
    if (area.isValid())
        dialog->move(area.center() - dialog->rect().center());
}

}  // namespace tolmar
