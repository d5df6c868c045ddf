#include "panels/dialogs/image-shift-dialog.h"

#include "toolkit/toolkit.h"

#include <QDialog>
#include <QPushButton>

namespace talmo {

namespace {

constexpr uint32_t kSignature = FourCC("IShf");
constexpr int32_t kRevertID = 90;
constexpr int32_t kCancelID = 91;
constexpr int32_t kOKID = 92;

OSStatus runShiftDialog(const Bundle& bundle, const char* window, _IS_Options& options, bool* accepted, QWidget* parent)
{
    OSStatus status = noErr;
    std::unique_ptr<QWidget> made = CreateWindowFromDescription(bundle, "ImageShift", window, parent, &status);
    auto* dialog = qobject_cast<QDialog*>(made.get());
    if (!dialog)
        return kPMNoContext;
    LocalizeDescription(bundle, dialog);
    auto* ok = GetControlByID<QPushButton>(dialog, {kSignature, kOKID});
    auto* cancel = GetControlByID<QPushButton>(dialog, {kSignature, kCancelID});
    auto* revert = GetControlByID<QPushButton>(dialog, {kSignature, kRevertID});
    if (!ok || !cancel || !revert)
        return kPMNoContext;
    _IS_Options edited = options;
    QObject::connect(ok, &QPushButton::clicked, dialog, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
    QObject::connect(revert, &QPushButton::clicked, dialog, [&edited] { DefaultImageShift(edited); });
    if (dialog->exec() != QDialog::Accepted)
        return noErr;
    options = edited;
    if (accepted)
        *accepted = true;
    return noErr;
}

} // namespace

OSStatus RunModalImageShiftDialog(const Bundle& bundle, DialogMode, JobContext, _IS_Options& options, bool* accepted,
                                  QWidget* parent)
{
    return runShiftDialog(bundle, "Window", options, accepted, parent);
}

OSStatus RunModalMiniImageShiftDialog(const Bundle& bundle, JobContext, _IS_Options& options, bool* accepted,
                                      QWidget* parent)
{
    return runShiftDialog(bundle, "Mini", options, accepted, parent);
}

} // namespace talmo
