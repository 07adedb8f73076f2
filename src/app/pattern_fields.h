#pragma once
// Three linked fields that edit one byte pattern: ASCII with caret names for
// the control bytes ("^M^J"), upper-case hexadecimal ("0D0A") and binary.
// Whatever the user types into one field is turned into bytes and the other
// two are rewritten from them; the field being typed in keeps its text, so an
// unfinished entry is not taken from under the cursor. Used wherever a data
// pattern is typed (trigger data, search data); it knows nothing of either.
//
// What each field makes of its text:
//  - ASCII: each character's low eight bits are a byte (Latin-1 for the
//    characters a keyboard gives), and a caret with the letter after it names
//    a control byte ("^@" 0x00 ... "^_" 0x1F). A caret followed by anything
//    else, or a caret at the end, gives nothing. Bytes are shown the same way,
//    so a '^' byte (0x5E), which has no caret name, shows as "^" but is read
//    back as the start of one; type it in hex.
//  - HEX: letters a-f are taken as A-F; every other character that is not a
//    hex digit is removed as it is typed. Two digits are a byte; a last odd
//    digit is a byte still being typed and not part of the pattern.
//  - BIN: every character other than 0 and 1 is removed as it is typed, and
//    the digits are laid out eight to a group, one group per byte, groups
//    separated by a blank (the blanks are layout, put back after every edit).
//    A last group of fewer than eight digits is a byte still being typed and
//    not part of the pattern.
// When a field is left it is rewritten from the pattern, so what stays in
// view after typing is exactly what is searched for: a last odd hex digit, a
// last partial binary group and an unfinished caret name drop out there.
//
// A pattern holds at most kMaxPatternBytes bytes (a port takes 255 of them), and
// each field at most the characters that many bytes need there; text pasted
// beyond that is cut off, so a huge paste can never stall the window.

#include <QWidget>
#include <string>
#include <string_view>

class QLabel;
class QPlainTextEdit;

namespace kestrel {

class PatternFields final : public QWidget {
    Q_OBJECT
public:
    static constexpr int kMaxPatternBytes = 4096;

    explicit PatternFields(QWidget *parent = nullptr);
    // Fixed texts in the current language.
    void InitialLoads();

    // The pattern as upper-case hex digit pairs without separators ("0D0A").
    [[nodiscard]] QString hexText() const;
    // Characters other than hex digits are dropped, a last odd digit too.
    void setHexText(const QString &hex);
    // The pattern as a byte string (one char per byte).
    [[nodiscard]] const std::string &bytes() const { return bytes_; }
    void setBytes(std::string_view bytes);

signals:
    // The user changed the text of one of the fields (not sent by the setters).
    void patternEdited();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void edDataAscChange();
    void edDataHexChange();
    void edDataBinChange();
    // Rewrites every field but `typedIn` from the pattern.
    void showPattern(const QPlainTextEdit *typedIn);
    void setFieldText(QPlainTextEdit *field, const QString &text, int caret);
    // The field's text, cut to what the longest pattern needs there.
    QString typedText(QPlainTextEdit *field);

    QLabel *lblDataAsc;
    QLabel *lblDataHex;
    QLabel *lblDataBin;
    QPlainTextEdit *edDataAsc;
    QPlainTextEdit *edDataHex;
    QPlainTextEdit *edDataBin;
    QLabel *lblZeroNote;

    std::string bytes_;
    bool updating_ = false; // the fields are being written by the program, not by the user
};

} // namespace kestrel
