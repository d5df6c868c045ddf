// The event layer: the platform's four-character commands and its user events on Qt.
//
// A command ("help", "TFup", "ok  ") is a CommandEvent sent to a window; buttons and menu items
// carry theirs (ConnectCommand, CommandAction) and send it to their window when clicked, so a
// window's event filter is its command handler. User events (class "TPDE", kinds "TbdC" and
// "TBpC") are UserEvents posted to the dialog window; posting is safe from any thread.
#pragma once

#include <QAction>
#include <QEvent>

#include <cstdint>
#include <functional>

class QAbstractButton;
class QWidget;

namespace talmo {

class CommandEvent : public QEvent {
public:
    static QEvent::Type eventType();
    explicit CommandEvent(uint32_t command) : QEvent(eventType()), command_(command) { }
    uint32_t command() const { return command_; }

private:
    uint32_t command_;
};

class UserEvent : public QEvent {
public:
    static QEvent::Type eventType();
    UserEvent(uint32_t eventClass, uint32_t eventKind) : QEvent(eventType()), class_(eventClass), kind_(eventKind) { }
    uint32_t eventClass() const { return class_; }
    uint32_t eventKind() const { return kind_; }

private:
    uint32_t class_;
    uint32_t kind_;
};

// Sends `command` to `target` at once; true when a handler accepted it.
bool SendCommand(QWidget* target, uint32_t command);
// Posts a user event to `window` (any thread; delivered on the window's thread).
void PostUserEvent(QWidget* window, uint32_t eventClass, uint32_t eventKind);

// A button whose click sends `command` to its window.
void ConnectCommand(QAbstractButton* button, uint32_t command);
// A menu item carrying `command`; triggering it sends the command to `window`.
QAction* CommandAction(const QString& text, uint32_t command, QWidget* window);
uint32_t GetCommand(const QObject* buttonOrAction); // 0 when none

// Makes `handler` a command handler of `window` for as long as `owner` lives: a command it
// answers true for is taken; the rest go on to the window's other handlers. Calling it again
// for the same owner moves the handler to the new window.
void InstallCommandHandler(QWidget* window, QObject* owner, std::function<bool(uint32_t)> handler);

} // namespace talmo
