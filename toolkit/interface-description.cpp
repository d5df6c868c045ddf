#include "toolkit/interface-description.h"

#include <QFile>
#include <QUiLoader>

#include <cstdio>

namespace talmo {

std::unique_ptr<QWidget> CreateWindowFromDescription(const Bundle& bundle, const QString& name, const QString& window,
                                                     QWidget* parent, OSStatus* status)
{
    auto fail = [&](const char* why) {
        std::fprintf(stderr, "CreateWindowFromDescription(%s, %s): %s\n", qPrintable(name), qPrintable(window), why);
        if (status)
            *status = -9530;
        return nullptr;
    };
    const std::string fileName = (name + "." + window + ".ui").toStdString();
    auto path = bundle.resourcePath(fileName);
    if (!path)
        return fail("no such description in the bundle");
    QFile file(QString::fromStdString(*path));
    if (!file.open(QIODevice::ReadOnly))
        return fail("cannot read the description");
    QUiLoader loader;
    // Plug-ins of Designer's own would let a description run foreign code in the dialog.
    loader.clearPluginPaths();
    std::unique_ptr<QWidget> widget(loader.load(&file, parent));
    if (!widget)
        return fail(qPrintable(loader.errorString()));
    if (status)
        *status = noErr;
    return widget;
}

uint32_t FourCCFromText(const QString& text)
{
    if (text.size() != 4)
        return 0;
    uint32_t code = 0;
    for (QChar c : text) {
        if (c.unicode() > 0xFF)
            return 0;
        code = (code << 8) | c.unicode();
    }
    return code;
}

QString TextFromFourCC(uint32_t code)
{
    QString text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += QChar(char16_t((code >> shift) & 0xFF));
    return text;
}

ControlID GetControlID(const QWidget* control)
{
    if (!control)
        return {0, 0};
    const QVariant signature = control->property(kControlSignatureProperty);
    const QVariant id = control->property(kControlIDProperty);
    if (!signature.isValid())
        return {0, 0};
    return {FourCCFromText(signature.toString()), id.isValid() ? id.toInt() : 0};
}

void SetControlID(QWidget* control, ControlID id)
{
    control->setProperty(kControlSignatureProperty, TextFromFourCC(id.signature));
    control->setProperty(kControlIDProperty, id.id);
}

QWidget* GetControlByID(QWidget* root, ControlID id)
{
    if (!root)
        return nullptr;
    auto matches = [&](const QWidget* w) {
        const ControlID c = GetControlID(w);
        return c.signature == id.signature && c.id == id.id;
    };
    if (matches(root))
        return root;
    for (QWidget* w : root->findChildren<QWidget*>())
        if (matches(w))
            return w;
    return nullptr;
}

} // namespace talmo
