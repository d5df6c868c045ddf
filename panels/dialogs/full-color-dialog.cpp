#include "panels/dialogs/full-color-dialog.h"

#include "toolkit/toolkit.h"

#include <QDialog>
#include <QPushButton>

namespace talmo {

namespace {

constexpr uint32_t kSignature = FourCC("FCol");
constexpr int32_t kRevertID = 90;
constexpr int32_t kCancelID = 91;
constexpr int32_t kOKID = 92;

} // namespace

OSStatus RunModalFullColorSetup(const Bundle& bundle, DialogMode, JobContext, FullColorOptions& options, bool* accepted,
                                QWidget* parent)
{
    OSStatus status = noErr;
    std::unique_ptr<QWidget> window = CreateWindowFromDescription(bundle, "FullColor", "Window", parent, &status);
    auto* dialog = qobject_cast<QDialog*>(window.get());
    if (!dialog)
        return kPMNoContext;
    LocalizeDescription(bundle, dialog);
    auto* ok = GetControlByID<QPushButton>(dialog, {kSignature, kOKID});
    auto* cancel = GetControlByID<QPushButton>(dialog, {kSignature, kCancelID});
    auto* revert = GetControlByID<QPushButton>(dialog, {kSignature, kRevertID});
    if (!ok || !cancel || !revert)
        return kPMNoContext;
    FullColorOptions edited = options;
    QObject::connect(ok, &QPushButton::clicked, dialog, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
    QObject::connect(revert, &QPushButton::clicked, dialog, [&edited] { edited = FullColorOptions(); });
    if (dialog->exec() != QDialog::Accepted)
        return noErr;
    options = edited;
    if (accepted)
        *accepted = true;
    return noErr;
}

} // namespace talmo
