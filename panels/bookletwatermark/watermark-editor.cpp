#include "panels/bookletwatermark/watermark-editor.h"

#include "panels/bookletwatermark/bookletwatermark-settings.h"
#include "toolkit/toolkit.h"

#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <cstdio>
#include <set>

namespace talmo::bookletwatermark {

namespace {

constexpr int32_t kUnitsInches = 0;
constexpr double kMillimetresPerInch = 25.4;

enum ControlNumber : int32_t {
    kTextKindID = 1,
    kPictureKindID,
    kTextID,
    kChoosePictureID,
    kPictureNameID,
    kFontID,
    kFontSizeID,
    kColorID,
    kAngleID,
    kDensityID,
    kScaleID,
    kXOffsetID,
    kYOffsetID,
    kUnitsID,
    kPreviewID,
    kOKID = 20,
    kCancelID = 21,
    kFirstLabelID = 30,
};

class CommandFilter : public QObject {
public:
    CommandFilter(WatermarkEditorContext& context, QObject* parent) : QObject(parent), context_(context) { }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() != CommandEvent::eventType())
            return false;
        const bool handled = WatermarkEditorEventHandler(context_, static_cast<CommandEvent*>(event)->command());
        event->setAccepted(handled);
        return handled;
    }

private:
    WatermarkEditorContext& context_;
};

// The scalable fonts fontconfig knows, by the PostScript name the marking code finds them by.
QStringList installedFontNames()
{
    std::set<QString> names;
    FcPattern* pattern = FcPatternCreate();
    FcPatternAddBool(pattern, FC_SCALABLE, FcTrue);
    FcObjectSet* objects = FcObjectSetBuild(FC_POSTSCRIPT_NAME, nullptr);
    if (FcFontSet* fonts = FcFontList(nullptr, pattern, objects)) {
        for (int i = 0; i < fonts->nfont; ++i) {
            FcChar8* name = nullptr;
            if (FcPatternGetString(fonts->fonts[i], FC_POSTSCRIPT_NAME, 0, &name) == FcResultMatch && name)
                names.insert(QString::fromUtf8(reinterpret_cast<const char*>(name)));
        }
        FcFontSetDestroy(fonts);
    }
    FcObjectSetDestroy(objects);
    FcPatternDestroy(pattern);
    return QStringList(names.begin(), names.end());
}

QString localized(const WatermarkEditorContext& c, std::string_view key) { return LocalizedText(*c.bundle, key); }

void showPreview(WatermarkEditorContext& c)
{
    const int frame = c.preview->frameWidth();
    const QSize size = c.preview->minimumSize() - QSize(2 * frame, 2 * frame);
    QImage page(size, QImage::Format_ARGB32_Premultiplied);
    RenderWatermarkRecordPreview(c.record, c.paperWidth, c.paperHeight, page.bits(), page.width(), page.height());
    c.preview->setPixmap(QPixmap::fromImage(page));
}

double offsetShown(const WatermarkEditorContext& c, float inches)
{
    return c.record.units == kUnitsInches ? inches : inches * kMillimetresPerInch;
}

float offsetStored(const WatermarkEditorContext& c, double shown)
{
    return float(c.record.units == kUnitsInches ? shown : shown / kMillimetresPerInch);
}

void warn(const WatermarkEditorContext& c, std::string_view key)
{
    QMessageBox::warning(c.window, localized(c, "WmEdTitle"), localized(c, key));
}

} // namespace

OSStatus InitializeWatermarkEditor(WatermarkEditorContext& c)
{
    QDialog* w = c.window;
    const auto id = [](int32_t n) { return ControlID{kWatermarkEditorSignature, n}; };
    c.textKind = GetControlByID<QRadioButton>(w, id(kTextKindID));
    c.pictureKind = GetControlByID<QRadioButton>(w, id(kPictureKindID));
    c.text = GetControlByID<QLineEdit>(w, id(kTextID));
    c.choosePicture = GetControlByID<QPushButton>(w, id(kChoosePictureID));
    c.pictureName = GetControlByID<QLabel>(w, id(kPictureNameID));
    c.font = GetControlByID<QComboBox>(w, id(kFontID));
    c.fontSize = GetControlByID<QSpinBox>(w, id(kFontSizeID));
    c.color = AdoptControl<ColorSwatch>(w, id(kColorID));
    c.angle = GetControlByID<QSpinBox>(w, id(kAngleID));
    c.density = GetControlByID<QSpinBox>(w, id(kDensityID));
    c.scale = GetControlByID<QSpinBox>(w, id(kScaleID));
    c.xOffset = GetControlByID<QDoubleSpinBox>(w, id(kXOffsetID));
    c.yOffset = GetControlByID<QDoubleSpinBox>(w, id(kYOffsetID));
    c.units = GetControlByID<QComboBox>(w, id(kUnitsID));
    c.preview = GetControlByID<QLabel>(w, id(kPreviewID));
    auto* ok = GetControlByID<QPushButton>(w, id(kOKID));
    auto* cancel = GetControlByID<QPushButton>(w, id(kCancelID));
    if (!c.textKind || !c.pictureKind || !c.text || !c.choosePicture || !c.pictureName || !c.font || !c.fontSize ||
        !c.color || !c.angle || !c.density || !c.scale || !c.xOffset || !c.yOffset || !c.units || !c.preview || !ok ||
        !cancel) {
        std::fprintf(stderr, "InitializeWatermarkEditor: the Editor window lacks a control\n");
        return kPMNoContext;
    }
    SetLocalizedWindowTitle(*c.bundle, "WmEdTitle", w);
    const char* labels[] = {"WmEdText",    "WmEdPicture", "WmEdFont",    "WmEdColor", "WmEdAngle",
                            "WmEdDensity", "WmEdScale",   "WmEdOffsets", "WmEdKind"};
    for (int32_t i = 0; i < int32_t(std::size(labels)); ++i)
        SetLocalizedStaticText(*c.bundle, labels[i], GetControlByID(w, id(kFirstLabelID + i)));
    SetLocalizedControlTitle(*c.bundle, "WmEdTextKind", c.textKind);
    SetLocalizedControlTitle(*c.bundle, "WmEdPictureKind", c.pictureKind);
    SetLocalizedControlTitle(*c.bundle, "WmEdChoose", c.choosePicture);
    SetLocalizedControlTitle(*c.bundle, "OK", ok);
    SetLocalizedControlTitle(*c.bundle, "Cancel", cancel);
    c.color->setChooserTitle(localized(c, "WmEdColor"));

    c.font->addItems(installedFontNames());
    c.fontSize->setRange(4, 720);
    c.fontSize->setSuffix(" " + localized(c, "BWPoints"));
    c.angle->setRange(-180, 180);
    c.angle->setSuffix(QStringLiteral("°"));
    for (QSpinBox* percent : {c.density, c.scale})
        percent->setSuffix(QStringLiteral(" %"));
    c.density->setRange(1, 100);
    c.scale->setRange(1, 1000);
    c.units->addItems({localized(c, "WmEdInches"), localized(c, "WmEdMillimetres")});

    ok->setDefault(true);
    ConnectCommand(ok, kCommandOK);
    ConnectCommand(cancel, kCommandCancel);
    w->installEventFilter(new CommandFilter(c, w));

    const auto edited = [&c] { SyncFromUI(c); };
    QObject::connect(c.textKind, &QRadioButton::toggled, w, edited);
    QObject::connect(c.text, &QLineEdit::textChanged, w, edited);
    QObject::connect(c.font, &QComboBox::currentTextChanged, w, edited);
    QObject::connect(c.color, &ColorSwatch::colorChanged, w, edited);
    for (QSpinBox* spin : {c.fontSize, c.angle, c.density, c.scale})
        QObject::connect(spin, &QSpinBox::valueChanged, w, edited);
    for (QDoubleSpinBox* spin : {c.xOffset, c.yOffset})
        QObject::connect(spin, &QDoubleSpinBox::valueChanged, w, edited);
    // The offsets are stored in inches; the unit only changes how they are shown.
    QObject::connect(c.units, &QComboBox::currentIndexChanged, w, [&c](int index) {
        c.record.units = std::max(index, 0);
        SyncToUI(c);
    });
    QObject::connect(c.choosePicture, &QPushButton::clicked, w, [&c] {
        const QString path =
            QFileDialog::getOpenFileName(c.window, localized(c, "WmEdChooseTitle"), QString(),
                                         localized(c, "WmEdPictureFiles") + " (*.jpg *.jpeg *.tif *.tiff *.gif *.png)");
        if (path.isEmpty())
            return;
        setWatermarkText(c.record.filePath, path.toStdString());
        setWatermarkText(c.record.filename, QFileInfo(path).fileName().toStdString());
        c.record.isText = 0;
        SyncToUI(c);
    });
    SyncToUI(c);
    return noErr;
}

void SyncToUI(WatermarkEditorContext& c)
{
    const _WatermarkData& r = c.record;
    const QList<QWidget*> controls = {c.textKind, c.pictureKind, c.text,  c.font,    c.fontSize, c.color,
                                      c.angle,    c.density,     c.scale, c.xOffset, c.yOffset,  c.units};
    std::vector<std::unique_ptr<QSignalBlocker>> blockers;
    for (QWidget* control : controls)
        blockers.push_back(std::make_unique<QSignalBlocker>(control));
    const bool text = r.isText != 0;
    c.textKind->setChecked(text);
    c.pictureKind->setChecked(!text);
    c.text->setText(QString::fromStdString(std::string(watermarkText(r.textString))));
    const QString file = QString::fromStdString(std::string(watermarkText(r.filename)));
    c.pictureName->setText(file.isEmpty() ? localized(c, "WmEdNoPicture") : file);
    const QString font = QString::fromStdString(std::string(watermarkText(r.fontName)));
    if (c.font->findText(font) < 0 && !font.isEmpty())
        c.font->addItem(font); // kept even when not installed: the printer may have it
    c.font->setCurrentText(font);
    c.fontSize->setValue(r.fontSize);
    c.color->setColor(QColor::fromRgbF(r.wellColor.red, r.wellColor.green, r.wellColor.blue));
    c.angle->setValue(r.angle);
    c.density->setValue(r.density);
    c.scale->setValue(r.scale);
    const bool inches = r.units == kUnitsInches;
    for (QDoubleSpinBox* spin : {c.xOffset, c.yOffset}) {
        spin->setDecimals(inches ? 2 : 1);
        spin->setRange(inches ? -20 : -508, inches ? 20 : 508);
        spin->setSuffix(inches ? QStringLiteral(" in") : QStringLiteral(" mm"));
    }
    c.xOffset->setValue(offsetShown(c, r.xOffset));
    c.yOffset->setValue(offsetShown(c, r.yOffset));
    c.units->setCurrentIndex(inches ? 0 : 1);
    for (QWidget* control :
         {static_cast<QWidget*>(c.text), static_cast<QWidget*>(c.font), static_cast<QWidget*>(c.fontSize),
          static_cast<QWidget*>(c.color), static_cast<QWidget*>(c.angle), static_cast<QWidget*>(c.density)})
        control->setEnabled(text);
    c.choosePicture->setEnabled(!text);
    c.scale->setEnabled(!text);
    showPreview(c);
}

void SyncFromUI(WatermarkEditorContext& c)
{
    _WatermarkData& r = c.record;
    r.isText = c.textKind->isChecked() ? 1 : 0;
    setWatermarkText(r.textString, r.isText ? c.text->text().toStdString() : std::string());
    setWatermarkText(r.fontName, c.font->currentText().toStdString());
    r.fontSize = c.fontSize->value();
    const QColor color = c.color->color();
    r.wellColor = {float(color.redF()), float(color.greenF()), float(color.blueF()), 1};
    r.angle = c.angle->value();
    r.density = c.density->value();
    r.scale = c.scale->value();
    r.xOffset = offsetStored(c, c.xOffset->value());
    r.yOffset = offsetStored(c, c.yOffset->value());
    SyncToUI(c);
}

bool WatermarkEditorEventHandler(WatermarkEditorContext& c, uint32_t command)
{
    if (command == kCommandCancel) {
        c.window->reject();
        return true;
    }
    if (command != kCommandOK)
        return false;
    SyncFromUI(c);
    const std::string name = c.record.name();
    const auto& names = listOfWatermarks();
    if (name.empty())
        warn(c, c.record.isText ? "WmEdNameEmpty" : "WmEdPictureMissing");
    else if (name == kWatermarkListEntriesKey ||
             (name != c.original && std::find(names.begin(), names.end(), name) != names.end()))
        warn(c, "WmEdNameTaken");
    else
        c.window->accept();
    return true;
}

bool FinalizeWatermarkEditor(WatermarkEditorContext& c, bool accepted, std::string* savedName)
{
    if (!accepted)
        return false;
    _WatermarkData& r = c.record;
    // The panel tells the kinds apart by the text, so a text watermark keeps no picture.
    if (r.isText) {
        setWatermarkText(r.filename, "");
        setWatermarkText(r.filePath, "");
    }
    const std::string name = r.name();
    if (name != c.original) {
        // Glyphs of another text would make the wrong font subset.
        r.glyphs.clear();
        r.glyphCount = 0;
    }
    if (!saveWatermarkData(kWatermarksFile, r))
        return false;
    std::vector<std::string> names = listOfWatermarks();
    auto at = std::find(names.begin(), names.end(), c.original);
    if (c.original.empty() || at == names.end())
        names.push_back(name);
    else
        *at = name;
    if (!saveWatermarkList(kWatermarksFile, names))
        return false;
    if (!c.original.empty() && name != c.original)
        removeWatermarkData(kWatermarksFile, c.original);
    listOfWatermarks() = names;
    if (savedName)
        *savedName = name;
    return true;
}

OSStatus RunModalWatermarkEditorDialog(const Bundle& bundle, const std::string& original, double paperWidth,
                                       double paperHeight, std::string* savedName, QWidget* parent)
{
    WatermarkEditorContext context;
    context.bundle = &bundle;
    context.original = original;
    context.paperWidth = paperWidth;
    context.paperHeight = paperHeight;
    if (original.empty() || !loadWatermarkData(kWatermarksFile, original, context.record)) {
        context.original.clear();
        context.record = NewWatermarkTemplate();
    } else {
        // As the panel reads it: a record without text is a picture.
        context.record.isText = watermarkText(context.record.textString).empty() ? 0 : 1;
    }
    OSStatus status = noErr;
    std::unique_ptr<QWidget> window =
        CreateWindowFromDescription(bundle, "BookletWatermarkPanel", "Editor", parent, &status);
    context.window = qobject_cast<QDialog*>(window.get());
    if (!context.window)
        return kPMNoContext;
    if ((status = InitializeWatermarkEditor(context)) != noErr)
        return status;
    const bool accepted = context.window->exec() == QDialog::Accepted;
    if (!accepted)
        return userCanceledErr;
    if (!FinalizeWatermarkEditor(context, true, savedName)) {
        warn(context, "WmEdSaveFailed");
        return kWatermarkWriteErr;
    }
    return noErr;
}

bool ConfirmAndDeleteWatermark(const Bundle& bundle, const std::string& name, QWidget* parent)
{
    const auto& names = listOfWatermarks();
    if (std::find(names.begin(), names.end(), name) == names.end())
        return false;
    const QString title = LocalizedText(bundle, "WmEdTitle");
    const QString question = LocalizedText(bundle, "WmEdDeleteQuestion", {name});
    if (QMessageBox::question(parent, title, question, QMessageBox::Yes | QMessageBox::No, QMessageBox::No) !=
        QMessageBox::Yes)
        return false;
    std::vector<std::string> rest;
    for (const std::string& n : names)
        if (n != name)
            rest.push_back(n);
    if (!saveWatermarkList(kWatermarksFile, rest))
        return false;
    removeWatermarkData(kWatermarksFile, name);
    listOfWatermarks() = rest;
    return true;
}

} // namespace talmo::bookletwatermark
