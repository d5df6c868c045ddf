#include "toolkit/custom-value-dialog.h"

#include "toolkit/events.h"
#include "toolkit/input-limit.h"
#include "toolkit/interface-description.h"
#include "toolkit/localized-labels.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <cstdio>

namespace talmo {

namespace {

// Delivers the dialog's command events to its handler.
class CommandFilter : public QObject {
public:
    CommandFilter(CustomValueContext& context, QObject* parent) : QObject(parent), context_(context) { }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() != CommandEvent::eventType())
            return false;
        const bool handled = CustomValueEventHandler(context_, static_cast<CommandEvent*>(event)->command());
        event->setAccepted(handled);
        return handled;
    }

private:
    CustomValueContext& context_;
};

std::optional<int32_t> fieldValue(const CustomValueContext& context)
{
    bool ok = false;
    const int value = context.field->text().toInt(&ok);
    if (!ok || value < context.minimum || value > context.maximum)
        return std::nullopt;
    return value;
}

} // namespace

OSStatus InitializeCustomValue(const Bundle& bundle, CustomValueContext& context, const QString& startText)
{
    QDialog* window = context.window;
    context.field = GetControlByID<QLineEdit>(window, {kCustomValueSignature, kCustomValueFieldID});
    auto* ok = GetControlByID<QPushButton>(window, {kCustomValueSignature, kCustomValueOKID});
    auto* cancel = GetControlByID<QPushButton>(window, {kCustomValueSignature, kCustomValueCancelID});
    if (!context.field || !ok || !cancel) {
        std::fprintf(stderr, "InitializeCustomValue: the CustomValue window lacks its field or buttons\n");
        return kPMNoContext;
    }
    SetLocalizedWindowTitle(bundle, "CustomValue Title", window);
    SetLocalizedStaticText(bundle, "CustomValue Prompt",
                           GetControlByID(window, {kCustomValueSignature, kCustomValuePromptID}));
    SetLocalizedStaticText(bundle, "CustomValue Range",
                           GetControlByID(window, {kCustomValueSignature, kCustomValueRangeID}),
                           {context.minimum, context.maximum});
    SetLocalizedControlTitle(bundle, "OK", ok);
    SetLocalizedControlTitle(bundle, "Cancel", cancel);

    const QString digits = context.minimum < 0 ? QStringLiteral("-0123456789") : QStringLiteral("0123456789");
    LimitInputLengthAndCharacters(context.field, context.minimum, context.maximum, digits);
    context.field->setText(startText);
    // A start text the limits would refuse is not offered for editing.
    int position = 0;
    QString check = startText;
    if (context.field->validator()->validate(check, position) == QValidator::Invalid)
        context.field->clear();
    context.field->selectAll();
    context.field->setFocus();

    ok->setDefault(true);
    ConnectCommand(ok, kCommandOK);
    ConnectCommand(cancel, kCommandCancel);
    window->installEventFilter(new CommandFilter(context, window));
    return noErr;
}

bool CustomValueEventHandler(CustomValueContext& context, uint32_t command)
{
    if (command == kCommandOK) {
        if (fieldValue(context)) {
            context.window->accept();
        } else {
            QApplication::beep();
            context.field->selectAll();
            context.field->setFocus();
        }
        return true;
    }
    if (command == kCommandCancel) {
        context.window->reject();
        return true;
    }
    return false;
}

void FinalizeCustomValue(const CustomValueContext& context, bool accepted, QString* valueString, int16_t* value)
{
    const auto number = accepted ? fieldValue(context) : std::nullopt;
    if (!number)
        return;
    *valueString = context.field->text();
    *value = int16_t(*number);
}

OSStatus RunModalCustomValueDialog(const Bundle& bundle, int32_t minimum, int32_t maximum, QString* valueString,
                                   int16_t* value, QWidget* parent)
{
    CustomValueContext context;
    context.minimum = std::max<int32_t>(minimum, INT16_MIN);
    context.maximum = std::min<int32_t>(maximum, INT16_MAX);
    if (!valueString || !value || context.minimum > context.maximum)
        return paramErr;
    OSStatus status = noErr;
    std::unique_ptr<QWidget> window = CreateWindowFromDescription(bundle, "Utilities", "CustomValue", parent, &status);
    context.window = qobject_cast<QDialog*>(window.get());
    if (!context.window) {
        if (window)
            std::fprintf(stderr, "RunModalCustomValueDialog: the CustomValue window is not a dialog\n");
        return kPMNoContext;
    }
    if ((status = InitializeCustomValue(bundle, context, *valueString)) != noErr)
        return status;
    const bool accepted = context.window->exec() == QDialog::Accepted;
    FinalizeCustomValue(context, accepted, valueString, value);
    return accepted ? noErr : userCanceledErr;
}

} // namespace talmo
