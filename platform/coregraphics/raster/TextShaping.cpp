#include "rastergraphics/TextShaping.h"

#include "rastergraphics/ToolkitPath.h"
#include "rastergraphics/ToolkitRuntimeFolder.h"
#include "rastergraphics/ToolkitSilence.h"

#include <QFont>
#include <QFontDatabase>
#include <QGlyphRun>
#include <QGuiApplication>
#include <QHash>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>
#include <QTextBoundaryFinder>
#include <QTextLayout>

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

namespace tallyforge {

namespace {

/// Everything is laid out once at this size, in pixels, and scaled from there.
constexpr int kShapingSize = 256;
constexpr qsizetype kLongestText = 4096;

/// True when there is an application object that knows fonts. One without a window system is made when there
/// is none; it stays to the end of the program, because the toolkit's own statics outlive any owner of ours.
bool fontsAvailable() {
    if (!QCoreApplication::instance()) {
        static int count = 3;
        static char name[] = "tallyforge";
        static char option[] = "-platform";
        static char platform[] = "offscreen";
        static char* arguments[] = {name, option, platform, nullptr};
        const ToolkitRuntimeFolder folder;
        static QGuiApplication* const application = new QGuiApplication(count, arguments);
        return application != nullptr;
    }
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

QFont interfaceFont(int weight) {
    static const QString family = [] {
        QString inter = QStringLiteral("Inter");
        return QFontDatabase::hasFamily(inter)
                   ? inter
                   : QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    }();
    QFont font(family);
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(kShapingSize);
    font.setWeight(QFont::Weight(std::clamp(weight, 100, 900)));
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

/// The text as the toolkit holds it, and the byte at which each of its units begins. A broken sequence
/// becomes one replacement character a byte.
struct Decoded {
    QString text;
    std::vector<size_t> offsets; ///< one more than units: the end
};

Decoded decode(std::string_view utf8) {
    Decoded result;
    size_t at = 0;
    while (at < utf8.size()) {
        auto lead = static_cast<unsigned char>(utf8[at]);
        size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        length = std::min(length, utf8.size() - at);
        QString character = QString::fromUtf8(utf8.data() + at, qsizetype(length));
        bool whole = character.size() == 1 || (character.size() == 2 && character.at(0).isHighSurrogate());
        bool broken = length > 1 && (!whole || character.at(0) == QChar::ReplacementCharacter);
        bool realReplacement = utf8.substr(at, 3) == "\xEF\xBF\xBD";
        if (character.isEmpty() || (broken && !realReplacement)) {
            character = QChar(QChar::ReplacementCharacter);
            length = 1;
        }
        for (qsizetype i = 0; i < character.size(); ++i)
            result.offsets.push_back(at);
        result.text += character;
        at += length;
    }
    result.offsets.push_back(utf8.size());
    return result;
}

/// The glyph's outline, which the font makes anew each time; a screen's texts share most of their letters.
QPainterPath outlineOf(const QRawFont& font, quint32 glyph) {
    constexpr qsizetype kMost = 2048;
    // Kept to the end of the program, as the fonts' owner is.
    static auto& known = *new QHash<std::pair<QRawFont, quint32>, QPainterPath>;
    static std::mutex mutex;
    std::lock_guard lock(mutex);
    const std::pair<QRawFont, quint32> key(font, glyph);
    if (auto found = known.constFind(key); found != known.constEnd()) return *found;
    if (known.size() >= kMost) known.clear();
    return *known.insert(key, font.pathForGlyph(glyph));
}

/// A glyph without an outline is a picture of its own, as emoji are.
void addPicture(TextLine& line, const QRawFont& font, quint32 glyph, const QPointF& at) {
    QRectF box = font.boundingRect(glyph).toAlignedRect();
    if (box.isEmpty() || box.width() > 4 * kShapingSize || box.height() > 4 * kShapingSize) return;
    QImage picture(box.size().toSize(), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QGlyphRun run;
    run.setRawFont(font);
    run.setGlyphIndexes({glyph});
    run.setPositions({QPointF(0, 0)});
    QPainter(&picture).drawGlyphRun(-box.topLeft(), run);
    auto image = std::make_shared<CGImage>(picture.width(), picture.height());
    for (int y = 0; y < picture.height(); ++y)
        std::copy_n(reinterpret_cast<const uint32_t*>(picture.constScanLine(y)), picture.width(),
                    image->row(y));
    line.pictures.push_back({std::move(image),
                             {{(at.x() + box.x()) / kShapingSize, (at.y() + box.y()) / kShapingSize},
                              {box.width() / kShapingSize, box.height() / kShapingSize}}});
}

} // namespace

std::shared_ptr<const TextLine> ShapeText(std::string_view utf8, int weight) {
    ToolkitSilence silence;
    if (!fontsAvailable()) return nullptr;
    QString text = decode(utf8.substr(0, size_t(kLongestText) * 4)).text.left(kLongestText);
    for (QChar& c : text) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator)
            c = u' ';
    }
    QFont font = interfaceFont(weight);
    QRawFont mainFont = QRawFont::fromFont(font);
    auto line = std::make_shared<TextLine>();
    line->ascent = mainFont.ascent() / kShapingSize;
    line->descent = mainFont.descent() / kShapingSize;
    if (text.isEmpty()) return line;

    QTextLayout layout(text, font);
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setWrapMode(QTextOption::NoWrap);
    option.setFlags(QTextOption::IncludeTrailingSpaces);
    layout.setTextOption(option);
    layout.setCacheEnabled(true);
    layout.beginLayout();
    QTextLine textLine = layout.createLine();
    textLine.setLineWidth(4.0 * kShapingSize * double(kLongestText));
    textLine.setPosition({0, 0});
    layout.endLayout();
    line->width = textLine.naturalTextWidth() / kShapingSize;

    double baseline = textLine.y() + textLine.ascent();
    CGAffineTransform toUnit = CGAffineTransformMakeScale(1.0 / kShapingSize, 1.0 / kShapingSize);
    QPainterPath outline;
    for (const QGlyphRun& run : textLine.glyphRuns()) {
        QRawFont runFont = run.rawFont();
        const QList<quint32> glyphs = run.glyphIndexes();
        const QList<QPointF> positions = run.positions();
        for (qsizetype i = 0; i < glyphs.size(); ++i) {
            QPointF at = positions[i] - QPointF(0, baseline);
            QPainterPath path = outlineOf(runFont, glyphs[i]);
            if (path.isEmpty())
                addPicture(*line, runFont, glyphs[i], at);
            else
                outline.addPath(path.translated(at));
        }
    }
    line->outline = PathFromToolkit(outline).transformed(toUnit);
    line->reach = line->outline.boundingBox();
    return line;
}

std::vector<size_t> FindCharacterBoundaries(std::string_view utf8) {
    Decoded decoded = decode(utf8);
    std::vector<size_t> boundaries{0};
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, decoded.text);
    for (qsizetype i = finder.toNextBoundary(); i >= 0; i = finder.toNextBoundary()) {
        size_t offset = decoded.offsets[size_t(i)];
        if (offset > boundaries.back()) boundaries.push_back(offset);
    }
    return boundaries;
}

} // namespace tallyforge
