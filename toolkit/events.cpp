#include "toolkit/events.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QPointer>
#include <QWidget>

namespace talmo {

namespace {
constexpr char kCommandProperty[] = "command";

class CommandHandler : public QObject {
public:
    CommandHandler(QObject* owner, std::function<bool(uint32_t)> handler) : QObject(owner), handler_(std::move(handler))
    {
    }
    void watch(QWidget* window, std::function<bool(uint32_t)> handler)
    {
        if (window_)
            window_->removeEventFilter(this);
        window_ = window;
        handler_ = std::move(handler);
        if (window_)
            window_->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != CommandEvent::eventType() || !handler_ ||
            !handler_(static_cast<CommandEvent*>(event)->command()))
            return QObject::eventFilter(watched, event);
        event->accept();
        return true;
    }

private:
    QPointer<QWidget> window_;
    std::function<bool(uint32_t)> handler_;
};
} // namespace

QEvent::Type CommandEvent::eventType()
{
    static const auto type = QEvent::Type(QEvent::registerEventType());
    return type;
}

QEvent::Type UserEvent::eventType()
{
    static const auto type = QEvent::Type(QEvent::registerEventType());
    return type;
}

bool SendCommand(QWidget* target, uint32_t command)
{
    if (!target)
        return false;
    CommandEvent event(command);
    event.setAccepted(false);
    QCoreApplication::sendEvent(target, &event);
    return event.isAccepted();
}

void PostUserEvent(QWidget* window, uint32_t eventClass, uint32_t eventKind)
{
    if (window)
        QCoreApplication::postEvent(window, new UserEvent(eventClass, eventKind));
}

void ConnectCommand(QAbstractButton* button, uint32_t command)
{
    button->setProperty(kCommandProperty, uint(command));
    QObject::connect(button, &QAbstractButton::clicked, button,
                     [button, command] { SendCommand(button->window(), command); });
}

QAction* CommandAction(const QString& text, uint32_t command, QWidget* window)
{
    auto* action = new QAction(text, window);
    action->setProperty(kCommandProperty, uint(command));
    QPointer<QWidget> target(window);
    QObject::connect(action, &QAction::triggered, action, [target, command] { SendCommand(target, command); });
    return action;
}

uint32_t GetCommand(const QObject* object)
{
    const QVariant v = object ? object->property(kCommandProperty) : QVariant();
    return v.isValid() ? v.toUInt() : 0;
}

void InstallCommandHandler(QWidget* window, QObject* owner, std::function<bool(uint32_t)> handler)
{
    if (!owner)
        return;
    CommandHandler* h = nullptr;
    for (QObject* child : owner->children())
        if ((h = dynamic_cast<CommandHandler*>(child)))
            break;
    if (!h)
        h = new CommandHandler(owner, nullptr);
    h->watch(window, std::move(handler));
}

} // namespace talmo
