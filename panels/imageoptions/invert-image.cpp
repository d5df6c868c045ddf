// The invert image group of the Image Options panel: negative and mirror image.
#include "panels/imageoptions/imageoptions-panel.h"
#include "toolkit/toolkit.h"

#include <QCheckBox>

namespace talmo::imageoptions {

OSStatus InvertImageInitialize(InvertImageContext* context, InvertImageOptions* options)
{
    if (!context || !options)
        return paramErr;
    *context = {};
    *options = {};
    return noErr;
}

namespace {

void showOptions(const InvertImageContext& context, const InvertImageOptions& options)
{
    if (context.negative)
        context.negative->setChecked(options.negativeImage != 0);
    if (context.mirror)
        context.mirror->setChecked(options.mirrorImage != 0);
}

} // namespace

OSStatus InvertImageOpen(const Bundle& bundle, QWidget* window, QWidget* pane, InvertImageContext* context,
                         const InvertImageOptions* options)
{
    if (!context || !options)
        return paramErr;
    QWidget* root = pane ? pane : window;
    if (!root)
        return kPMNoContext;
    context->negative = GetControlByID<QCheckBox>(root, {kImageOptionsSignature, 7});
    context->mirror = GetControlByID<QCheckBox>(root, {kImageOptionsSignature, 8});
    if (!context->negative || !context->mirror)
        return kPMNoContext;
    SetLocalizedControlTitle(bundle, "Mirror Image Title", context->mirror.data());
    showOptions(*context, *options);
    return noErr;
}

void InvertImageSetOptionsFromTicket(InvertImageOptions* options, const pl::DictPtr& dict)
{
    if (!options || !dict)
        return;
    GetCFIndexFromCFDictionary(dict, kNegativeImageField, &options->negativeImage);
    GetCFIndexFromCFDictionary(dict, kMirrorImageField, &options->mirrorImage);
}

pl::DictPtr InvertImageCreateTicketFromOptions(const InvertImageOptions* options)
{
    if (!options)
        return nullptr;
    auto dict = pl::makeDict();
    WriteTicketValue(dict, kNegativeImageField, options->negativeImage);
    WriteTicketValue(dict, kMirrorImageField, options->mirrorImage);
    return dict;
}

OSStatus InvertImageSync(InvertImageContext* context, InvertImageOptions* options, bool direction, Ticket* ticket)
{
    if (!context || !options || !ticket)
        return paramErr;
    if (direction) {
        InvertImageSetOptionsFromTicket(options, pl::as<pl::Dictionary>(ticket->get(kInvertImageOptionsKey)));
        showOptions(*context, *options);
        return noErr;
    }
    if (context->negative)
        options->negativeImage = context->negative->isChecked() ? 1 : 0;
    if (context->mirror)
        options->mirrorImage = context->mirror->isChecked() ? 1 : 0;
    return ticket->set(kInvertImageOptionsKey, InvertImageCreateTicketFromOptions(options), kTalmoHostCreator);
}

void InvertImageTerminate(InvertImageContext* context)
{
    if (context)
        *context = {};
}

} // namespace talmo::imageoptions
