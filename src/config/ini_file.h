#pragma once
// A small INI document with the private-profile conventions the settings files
// rely on: sections and keys matched without regard to (ASCII) case, keys may
// hold blanks ("Record data"), values kept as they stand, the file's order and
// every unknown line kept on save. Reading never fails: what cannot be read
// gives the caller's default.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/result.h"

namespace kestrel {

class IniFile {
public:
    IniFile() = default;

    // Accepts LF, CRLF or CR line ends, a UTF-8 byte-order mark, blanks around '='
    // and '[...]'. A section line without its closing bracket names the section
    // by the rest of the line. Lines that are neither are kept as they stand.
    [[nodiscard]] static IniFile Parse(std::string_view text);
    // LF line ends; every line the document holds, in its order.
    [[nodiscard]] std::string ToText() const;

    [[nodiscard]] bool SectionExists(std::string_view section) const;
    [[nodiscard]] bool ValueExists(std::string_view section, std::string_view key) const;

    // With a repeated section or key the first one counts, as the platform's reader does.
    [[nodiscard]] std::string ReadString(std::string_view section, std::string_view key,
                                         std::string_view def) const;
    // Decimal text, an optional sign; anything else (also a number beyond 32 bits) gives def.
    [[nodiscard]] int ReadInteger(std::string_view section, std::string_view key, int def) const;
    // Read as an integer: non-zero is true.
    [[nodiscard]] bool ReadBool(std::string_view section, std::string_view key, bool def) const;
    // A comma list in string-list comma text; a missing key gives def.
    [[nodiscard]] std::vector<std::string> ReadCommaList(std::string_view section, std::string_view key,
                                                         const std::vector<std::string> &def) const;

    // Replaces the first matching key's value or appends the key to the section
    // (a new section goes to the end of the document).
    void WriteString(std::string_view section, std::string_view key, std::string_view value);
    void WriteInteger(std::string_view section, std::string_view key, long long value);
    void WriteBool(std::string_view section, std::string_view key, bool value);
    void WriteCommaList(std::string_view section, std::string_view key, const std::vector<std::string> &items);

    // Removes every section of that name with all its lines.
    void EraseSection(std::string_view section);
    void DeleteKey(std::string_view section, std::string_view key);

    // Section names in file order (first spelling of each), keys of the first such section.
    [[nodiscard]] std::vector<std::string> SectionNames() const;
    [[nodiscard]] std::vector<std::string> KeyNames(std::string_view section) const;

private:
    struct Line {
        std::string key;   // empty for a comment or an unreadable line
        std::string value; // the value, or the raw text of a non-key line
        bool isKey = false;
    };
    struct Section {
        std::string name;      // as written; empty name for the lines before the first section
        bool hasHeader = true; // false only for that leading block
        std::vector<Line> lines;
        std::unordered_map<std::string, std::size_t> keyIndex; // lower-case key -> first line
    };

    [[nodiscard]] const Section *findSection(std::string_view name) const;
    Section *findSection(std::string_view name);
    [[nodiscard]] const Line *findKey(std::string_view section, std::string_view key) const;
    Section &sectionForWrite(std::string_view name);
    void rebuildSectionIndex();
    static void rebuildKeyIndex(Section &s);

    std::vector<Section> sections_;
    std::unordered_map<std::string, std::size_t> sectionIndex_; // lower-case name -> first section
};

// "Trigger" + 0 -> "Trigger0": numbered names carry no padding.
[[nodiscard]] std::string NumberedName(std::string_view base, long long n);

// String-list comma text: items joined by commas; an item that is empty or holds
// a comma, a blank, a quote or a control character is put in double quotes with
// inner quotes doubled. Splitting reads that form back (blanks outside quotes also
// end an item, as a string list does).
[[nodiscard]] std::string JoinCommaText(const std::vector<std::string> &items);
[[nodiscard]] std::vector<std::string> SplitCommaText(std::string_view text);

// Integer parse used by ReadInteger: whole text, decimal, optional sign, 32-bit range.
[[nodiscard]] bool ParseIniInteger(std::string_view text, int &out);

[[nodiscard]] std::string AsciiLower(std::string_view s);
[[nodiscard]] bool EqualsNoCase(std::string_view a, std::string_view b);

// Reads a whole settings file, as UTF-8 whatever encoding it came in
// (SettingsTextToUtf8); a save writes UTF-8. A missing file gives an empty document with
// existed = false; an unreadable one (a folder, a pipe or device, no permission)
// gives an empty document and status kMsgSettingsFileNotRead with the reason.
struct IniReadResult {
    IniFile ini;
    bool existed = false;
    Result status;
    // Loads what it can but must never be rewritten: larger than a settings file
    // is read, or holding NUL bytes (a recording picked by mistake, say).
    bool notSettingsFile = false;
};
// Files beyond this size are not settings files; only their first part is read.
inline constexpr std::uintmax_t kMaxIniFileBytes = 16u * 1024u * 1024u;
[[nodiscard]] IniReadResult ReadIniFile(const std::filesystem::path &path);

// Writes text to a temporary file beside path, flushes it to disk and renames it
// over path, so a crash or a full disk leaves either the old file or the new one.
// A file without any write permission is left alone; a symbolic link is followed.
// A failure is kMsgSettingsFileNotWritten with the reason.
[[nodiscard]] Result WriteFileAtomic(const std::filesystem::path &path, std::string_view text);
[[nodiscard]] Result WriteIniFile(const std::filesystem::path &path, const IniFile &ini);

// Reads the file as it stands (or an empty document when it is missing), lets
// change store over it and replaces it atomically, so unknown entries survive.
// A file that could not be read or is not a settings file is left as it is
// (kMsgSettingsFileNotRead, kMsgSettingsFileNotWritten).
[[nodiscard]] Result UpdateIniFile(const std::filesystem::path &path, const std::function<void(IniFile &)> &change);

} // namespace kestrel
