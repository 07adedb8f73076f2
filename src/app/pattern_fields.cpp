#include "app/pattern_fields.h"

#include <QFocusEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QStyle>
#include <algorithm>

#include "base/string_table.h"
#include "present/byte_render.h"
#include "present/byte_text.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

constexpr int kBytesPerBinLine = 8;                      // binary groups in one line of the field
constexpr int kLineChars = kBytesPerBinLine * 9 - 1;     // "00001101 00001010 ..." without a last blank
constexpr int kVisibleLines = 3;

// Removes what the validator removes until nothing more goes: it keeps the
// second of two adjacent bad characters, a field must not.
std::string FullyValidated(std::string text, std::string (*validate)(std::string_view))
{
    for (std::string next = validate(text); next != text; next = validate(text))
        text = std::move(next);
    return text;
}

std::string CleanHex(const QString &typed)
{
    std::string s = typed.toStdString();
    for (char &c : s)
        if (c >= 'a' && c <= 'f')
            c = static_cast<char>(c - 'a' + 'A');
    return FullyValidated(std::move(s), ValidateHexString);
}

std::string CleanBin(const QString &typed) { return FullyValidated(typed.toStdString(), ValidateBinString); }

// Eight digits to a group, one blank between groups.
QString GroupedBin(const std::string &digits)
{
    QString out;
    out.reserve(static_cast<int>(digits.size() + digits.size() / 8));
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && i % 8 == 0)
            out += QLatin1Char(' ');
        out += QLatin1Char(digits[i]);
    }
    return out;
}

// Where the caret goes in the grouped text after `digits` digits: behind the
// digit, before the blank that may follow it.
int GroupedCaret(int digits) { return digits == 0 ? 0 : digits + (digits - 1) / 8; }

QString HexOf(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size() * 2);
    for (const char b : bytes)
        out += ByteToHex(static_cast<std::uint8_t>(b));
    return QString::fromLatin1(out.data(), static_cast<int>(out.size()));
}

QString BinOf(std::string_view bytes)
{
    std::string digits;
    digits.reserve(bytes.size() * 8);
    for (const char b : bytes)
        digits += ByteToBin(static_cast<std::uint8_t>(b));
    return GroupedBin(digits);
}

QString AscOf(std::string_view bytes)
{
    const std::string text = RealStrToTrigStr(bytes);
    return QString::fromLatin1(text.data(), static_cast<int>(text.size())); // one character per byte
}

// The field's text as typed: a non-breaking space stays one, a line break is LF.
QString FieldText(const QPlainTextEdit *field)
{
    QString text = field->document()->toRawText();
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    text.replace(QChar::LineSeparator, QLatin1Char('\n'));
    return text;
}

QPlainTextEdit *MakeField(QWidget *parent, const char *name, QTextOption::WrapMode wrap)
{
    auto *field = new QPlainTextEdit(parent);
    field->setObjectName(name);
    QFont mono = field->font(); // the dialog's size, the grid's family
    mono.setFamily(QString::fromLatin1(kCellFontFamily.data(), static_cast<int>(kCellFontFamily.size())));
    mono.setStyleHint(QFont::Monospace);
    mono.setFixedPitch(true);
    if (!QFontInfo(mono).fixedPitch()) {
        const qreal size = mono.pointSizeF();
        mono = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        mono.setPointSizeF(size);
    }
    field->setFont(mono);
    field->setTabChangesFocus(true);
    field->setWordWrapMode(wrap);
    field->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    field->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn); // the width of a line never changes
    field->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const QFontMetrics fm = field->fontMetrics();
    const int frame = 2 * field->frameWidth() + 2 * static_cast<int>(field->document()->documentMargin()) + 4;
    const int bar = field->style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, field);
    field->setFixedWidth(fm.horizontalAdvance(QString(kLineChars, QLatin1Char('0'))) + frame + bar);
    field->setFixedHeight(fm.lineSpacing() * kVisibleLines + frame);
    return field;
}

} // namespace

PatternFields::PatternFields(QWidget *parent) : QWidget(parent)
{
    setObjectName("PatternFields");
    lblDataAsc = new QLabel(this);
    lblDataAsc->setObjectName("lblDataAsc");
    lblDataHex = new QLabel(this);
    lblDataHex->setObjectName("lblDataHex");
    lblDataBin = new QLabel(this);
    lblDataBin->setObjectName("lblDataBin");
    edDataAsc = MakeField(this, "edDataAsc", QTextOption::WrapAnywhere);
    edDataHex = MakeField(this, "edDataHex", QTextOption::WrapAnywhere);
    edDataBin = MakeField(this, "edDataBin", QTextOption::WordWrap); // a byte's group is never split
    lblDataAsc->setBuddy(edDataAsc);
    lblDataHex->setBuddy(edDataHex);
    lblDataBin->setBuddy(edDataBin);
    lblZeroNote = new QLabel(this);
    lblZeroNote->setObjectName("lblZeroNote");
    lblZeroNote->setWordWrap(true);
    QFont bold = lblZeroNote->font();
    bold.setBold(true);
    lblZeroNote->setFont(bold);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(lblDataAsc, 0, 0, Qt::AlignTop);
    grid->addWidget(edDataAsc, 0, 1);
    grid->addWidget(lblDataHex, 1, 0, Qt::AlignTop);
    grid->addWidget(edDataHex, 1, 1);
    grid->addWidget(lblDataBin, 2, 0, Qt::AlignTop);
    grid->addWidget(edDataBin, 2, 1);
    grid->addWidget(lblZeroNote, 3, 0, 1, 2);

    for (QPlainTextEdit *field : {edDataAsc, edDataHex, edDataBin})
        field->installEventFilter(this);
    connect(edDataAsc, &QPlainTextEdit::textChanged, this, &PatternFields::edDataAscChange);
    connect(edDataHex, &QPlainTextEdit::textChanged, this, &PatternFields::edDataHexChange);
    connect(edDataBin, &QPlainTextEdit::textChanged, this, &PatternFields::edDataBinChange);
    InitialLoads();
}

void PatternFields::InitialLoads()
{
    lblDataAsc->setText(S(7490));
    lblDataHex->setText(S(7491));
    lblDataBin->setText(S(7492));
    edDataAsc->setToolTip(S(7493));
    lblZeroNote->setText(S(7470));
}

QString PatternFields::hexText() const { return HexOf(bytes_); }

void PatternFields::setHexText(const QString &hex)
{
    setBytes(HexToBytes(CleanHex(hex.left(2 * kMaxPatternBytes))).value_or(std::string()));
}

void PatternFields::setBytes(std::string_view bytes)
{
    bytes_ = std::string(bytes.substr(0, kMaxPatternBytes));
    showPattern(nullptr);
}

void PatternFields::showPattern(const QPlainTextEdit *typedIn)
{
    const bool was = updating_;
    updating_ = true;
    if (typedIn != edDataAsc)
        edDataAsc->setPlainText(AscOf(bytes_));
    if (typedIn != edDataHex)
        edDataHex->setPlainText(HexOf(bytes_));
    if (typedIn != edDataBin)
        edDataBin->setPlainText(BinOf(bytes_));
    updating_ = was;
}

void PatternFields::setFieldText(QPlainTextEdit *field, const QString &text, int caret)
{
    const bool was = updating_;
    updating_ = true;
    field->setPlainText(text);
    QTextCursor c = field->textCursor();
    c.setPosition(std::min(caret, static_cast<int>(text.size())));
    field->setTextCursor(c);
    updating_ = was;
}

QString PatternFields::typedText(QPlainTextEdit *field)
{
    // Caret names take two characters a byte, hex two, binary nine with the blank.
    const int limit = kMaxPatternBytes * (field == edDataBin ? 9 : 2);
    QString text = FieldText(field);
    if (text.size() > limit) {
        text.truncate(limit);
        setFieldText(field, text, limit);
    }
    return text;
}

void PatternFields::edDataAscChange()
{
    if (updating_)
        return;
    bytes_ = ConvertTrigStrToRealStr(Utf16ToByteString(typedText(edDataAsc).toStdU16String()));
    bytes_.resize(std::min<std::size_t>(bytes_.size(), kMaxPatternBytes));
    showPattern(edDataAsc);
    emit patternEdited();
}

void PatternFields::edDataHexChange()
{
    if (updating_)
        return;
    const QString typed = typedText(edDataHex);
    const std::string digits = CleanHex(typed);
    const QString clean = QString::fromLatin1(digits.data(), static_cast<int>(digits.size()));
    if (clean != typed) {
        const int caret = static_cast<int>(CleanHex(typed.left(edDataHex->textCursor().position())).size());
        setFieldText(edDataHex, clean, caret);
    }
    bytes_ = HexToBytes(digits).value_or(std::string()); // all digits by now
    showPattern(edDataHex);
    emit patternEdited();
}

void PatternFields::edDataBinChange()
{
    if (updating_)
        return;
    const QString typed = typedText(edDataBin);
    std::string digits = CleanBin(typed);
    digits.resize(std::min<std::size_t>(digits.size(), 8 * kMaxPatternBytes)); // no blanks pasted, more digits
    const QString grouped = GroupedBin(digits);
    if (grouped != typed) {
        const int before = static_cast<int>(CleanBin(typed.left(edDataBin->textCursor().position())).size());
        setFieldText(edDataBin, grouped, GroupedCaret(before));
    }
    bytes_ = BinToBytes(digits).value_or(std::string()); // a last partial group is dropped
    showPattern(edDataBin);
    emit patternEdited();
}

bool PatternFields::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut) {
        // Leaving for another window (a message box, a menu) is not leaving the field.
        const Qt::FocusReason why = static_cast<QFocusEvent *>(event)->reason();
        if (why != Qt::ActiveWindowFocusReason && why != Qt::PopupFocusReason) {
            if (watched == edDataAsc || watched == edDataHex || watched == edDataBin) {
                auto *field = static_cast<QPlainTextEdit *>(watched);
                const QString shown = field == edDataAsc ? AscOf(bytes_) : field == edDataHex ? HexOf(bytes_)
                                                                                                : BinOf(bytes_);
                if (FieldText(field) != shown)
                    setFieldText(field, shown, static_cast<int>(shown.size()));
            }
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace kestrel
