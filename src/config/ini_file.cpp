#include "config/ini_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>

#include "config/config_messages.h"
#include "config/settings_encoding.h"

namespace kestrel {

namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view Trim(std::string_view s)
{
    const auto first = s.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    const auto last = s.find_last_not_of(kBlanks);
    return s.substr(first, last - first + 1);
}

// A value or key never spans lines in the file: a line break would start a new entry.
std::string OneLine(std::string_view s)
{
    std::string out(s);
    for (char &c : out) {
        if (c == '\n' || c == '\r')
            c = ' ';
    }
    return out;
}

bool NeedsQuotes(std::string_view item)
{
    if (item.empty())
        return true;
    for (unsigned char c : item) {
        if (c <= ' ' || c == ',' || c == '"')
            return true;
    }
    return false;
}

bool IsListBlank(char c) { return c != '\0' && static_cast<unsigned char>(c) <= ' '; }

} // namespace

std::string AsciiLower(std::string_view s)
{
    std::string out(s);
    for (char &c : out) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

bool EqualsNoCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z')
            x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z')
            y = static_cast<char>(y - 'A' + 'a');
        if (x != y)
            return false;
    }
    return true;
}

std::string NumberedName(std::string_view base, long long n)
{
    return std::string(base) + std::to_string(n);
}

bool ParseIniInteger(std::string_view text, int &out)
{
    text = Trim(text);
    if (text.empty())
        return false;
    bool negative = false;
    if (text.front() == '+' || text.front() == '-') {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty())
        return false;
    long long value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
        value = value * 10 + (c - '0');
        if (value > 2147483648LL)
            return false;
    }
    if (negative)
        value = -value;
    if (value > 2147483647LL)
        return false;
    out = static_cast<int>(value);
    return true;
}

std::string JoinCommaText(const std::vector<std::string> &items)
{
    std::string out;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i)
            out += ',';
        const std::string &item = items[i];
        if (!NeedsQuotes(item)) {
            out += item;
            continue;
        }
        out += '"';
        for (char c : item) {
            if (c == '"')
                out += '"';
            out += c;
        }
        out += '"';
    }
    return out;
}

std::vector<std::string> SplitCommaText(std::string_view text)
{
    std::vector<std::string> items;
    std::size_t p = 0;
    const std::size_t n = text.size();
    auto skipBlanks = [&] {
        while (p < n && IsListBlank(text[p]))
            ++p;
    };
    skipBlanks();
    while (p < n) {
        std::string item;
        if (text[p] == '"') {
            ++p;
            while (p < n) {
                if (text[p] == '"') {
                    if (p + 1 < n && text[p + 1] == '"') {
                        item += '"';
                        p += 2;
                        continue;
                    }
                    ++p;
                    break;
                }
                item += text[p++];
            }
            // Text glued to a closing quote belongs to no item; skip to the next separator.
            while (p < n && text[p] != ',' && !IsListBlank(text[p]))
                ++p;
        } else {
            while (p < n && text[p] != ',' && !IsListBlank(text[p]))
                item += text[p++];
        }
        items.push_back(std::move(item));
        skipBlanks();
        if (p < n && text[p] == ',') {
            if (p + 1 == n)
                items.emplace_back(); // "a," holds an empty last item
            ++p;
            skipBlanks();
        }
    }
    return items;
}

// --- IniFile ---

IniFile IniFile::Parse(std::string_view text)
{
    IniFile ini;
    while (text.substr(0, 3) == "\xEF\xBB\xBF")
        text.remove_prefix(3);
    ini.sections_.push_back(Section{{}, false, {}, {}});
    std::size_t pos = 0;
    while (pos < text.size()) {
        // Lines end with LF, CR LF or a lone CR, as the platform's reader takes them.
        const auto end = text.find_first_of("\r\n", pos);
        const std::string_view raw = text.substr(pos, end == std::string_view::npos ? std::string_view::npos : end - pos);
        pos = end == std::string_view::npos ? text.size() : end + 1;
        if (end != std::string_view::npos && text[end] == '\r' && pos < text.size() && text[pos] == '\n')
            ++pos;
        const std::string_view line = Trim(raw);
        if (!line.empty() && line.front() == '[') {
            std::string_view name = line.substr(1);
            const auto close = name.find(']');
            if (close != std::string_view::npos)
                name = name.substr(0, close);
            ini.sections_.push_back(Section{std::string(Trim(name)), true, {}, {}});
            continue;
        }
        Section &current = ini.sections_.back();
        const auto eq = line.find('=');
        if (!line.empty() && line.front() != ';' && eq != std::string_view::npos && !Trim(line.substr(0, eq)).empty()) {
            current.lines.push_back(Line{std::string(Trim(line.substr(0, eq))), std::string(Trim(line.substr(eq + 1))), true});
        } else {
            current.lines.push_back(Line{{}, std::string(raw), false});
        }
    }
    for (auto &s : ini.sections_)
        rebuildKeyIndex(s);
    ini.rebuildSectionIndex();
    return ini;
}

std::string IniFile::ToText() const
{
    std::string out;
    for (const auto &s : sections_) {
        if (s.hasHeader) {
            out += '[';
            out += s.name;
            out += "]\n";
        }
        for (const auto &l : s.lines) {
            if (l.isKey) {
                out += l.key;
                out += '=';
            }
            out += l.value;
            out += '\n';
        }
    }
    return out;
}

void IniFile::rebuildSectionIndex()
{
    sectionIndex_.clear();
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        if (sections_[i].hasHeader)
            sectionIndex_.emplace(AsciiLower(sections_[i].name), i); // keeps the first
    }
}

void IniFile::rebuildKeyIndex(Section &s)
{
    s.keyIndex.clear();
    for (std::size_t i = 0; i < s.lines.size(); ++i) {
        if (s.lines[i].isKey)
            s.keyIndex.emplace(AsciiLower(s.lines[i].key), i);
    }
}

const IniFile::Section *IniFile::findSection(std::string_view name) const
{
    const auto it = sectionIndex_.find(AsciiLower(name));
    return it == sectionIndex_.end() ? nullptr : &sections_[it->second];
}

IniFile::Section *IniFile::findSection(std::string_view name)
{
    const auto it = sectionIndex_.find(AsciiLower(name));
    return it == sectionIndex_.end() ? nullptr : &sections_[it->second];
}

const IniFile::Line *IniFile::findKey(std::string_view section, std::string_view key) const
{
    const Section *s = findSection(section);
    if (!s)
        return nullptr;
    const auto it = s->keyIndex.find(AsciiLower(key));
    return it == s->keyIndex.end() ? nullptr : &s->lines[it->second];
}

bool IniFile::SectionExists(std::string_view section) const { return findSection(section) != nullptr; }

bool IniFile::ValueExists(std::string_view section, std::string_view key) const
{
    return findKey(section, key) != nullptr;
}

std::string IniFile::ReadString(std::string_view section, std::string_view key, std::string_view def) const
{
    const Line *l = findKey(section, key);
    return l ? l->value : std::string(def);
}

int IniFile::ReadInteger(std::string_view section, std::string_view key, int def) const
{
    const Line *l = findKey(section, key);
    int value = 0;
    if (!l || !ParseIniInteger(l->value, value))
        return def;
    return value;
}

bool IniFile::ReadBool(std::string_view section, std::string_view key, bool def) const
{
    return ReadInteger(section, key, def ? 1 : 0) != 0;
}

std::vector<std::string> IniFile::ReadCommaList(std::string_view section, std::string_view key,
                                                const std::vector<std::string> &def) const
{
    const Line *l = findKey(section, key);
    return l ? SplitCommaText(l->value) : def;
}

IniFile::Section &IniFile::sectionForWrite(std::string_view name)
{
    if (Section *s = findSection(name))
        return *s;
    if (sections_.empty())
        sections_.push_back(Section{{}, false, {}, {}});
    // Keep a blank line between sections for a reader of the file.
    Section &last = sections_.back();
    const bool lastIsEmptyPreamble = !last.hasHeader && last.lines.empty();
    if (!lastIsEmptyPreamble && (last.lines.empty() || last.lines.back().isKey || !last.lines.back().value.empty()))
        last.lines.push_back(Line{{}, {}, false});
    sections_.push_back(Section{OneLine(name), true, {}, {}});
    sectionIndex_.emplace(AsciiLower(sections_.back().name), sections_.size() - 1);
    return sections_.back();
}

void IniFile::WriteString(std::string_view section, std::string_view key, std::string_view value)
{
    Section &s = sectionForWrite(section);
    const auto it = s.keyIndex.find(AsciiLower(key));
    if (it != s.keyIndex.end()) {
        s.lines[it->second].value = OneLine(value);
        return;
    }
    // New keys go after the section's last key, before any trailing blank or comment lines.
    std::size_t at = s.lines.size();
    std::size_t lastKey = s.lines.size();
    for (std::size_t i = s.lines.size(); i-- > 0;) {
        if (s.lines[i].isKey) {
            lastKey = i;
            break;
        }
    }
    if (lastKey < s.lines.size()) {
        at = lastKey + 1;
    } else {
        while (at > 0 && Trim(s.lines[at - 1].value).empty())
            --at;
    }
    // Only blank or comment lines follow the insertion point, so no indexed key moves.
    s.lines.insert(s.lines.begin() + static_cast<std::ptrdiff_t>(at), Line{OneLine(key), OneLine(value), true});
    s.keyIndex.emplace(AsciiLower(s.lines[at].key), at);
}

void IniFile::WriteInteger(std::string_view section, std::string_view key, long long value)
{
    WriteString(section, key, std::to_string(value));
}

void IniFile::WriteBool(std::string_view section, std::string_view key, bool value)
{
    WriteString(section, key, value ? "1" : "0");
}

void IniFile::WriteCommaList(std::string_view section, std::string_view key, const std::vector<std::string> &items)
{
    WriteString(section, key, JoinCommaText(items));
}

void IniFile::EraseSection(std::string_view section)
{
    const std::string lower = AsciiLower(section);
    std::erase_if(sections_, [&](const Section &s) { return s.hasHeader && AsciiLower(s.name) == lower; });
    rebuildSectionIndex();
}

void IniFile::DeleteKey(std::string_view section, std::string_view key)
{
    Section *s = findSection(section);
    if (!s)
        return;
    const std::string lower = AsciiLower(key);
    std::erase_if(s->lines, [&](const Line &l) { return l.isKey && AsciiLower(l.key) == lower; });
    rebuildKeyIndex(*s);
}

std::vector<std::string> IniFile::SectionNames() const
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        const auto &s = sections_[i];
        if (!s.hasHeader)
            continue;
        const auto it = sectionIndex_.find(AsciiLower(s.name));
        if (it != sectionIndex_.end() && it->second == i)
            names.push_back(s.name);
    }
    return names;
}

std::vector<std::string> IniFile::KeyNames(std::string_view section) const
{
    std::vector<std::string> names;
    const Section *s = findSection(section);
    if (!s)
        return names;
    for (std::size_t i = 0; i < s->lines.size(); ++i) {
        const auto &l = s->lines[i];
        if (l.isKey && s->keyIndex.at(AsciiLower(l.key)) == i)
            names.push_back(l.key);
    }
    return names;
}

// --- files ---

IniReadResult ReadIniFile(const std::filesystem::path &path)
{
    IniReadResult result;
    std::error_code ec;
    const auto status = std::filesystem::status(path, ec);
    if (ec || !std::filesystem::exists(status))
        return result; // missing: all defaults
    result.existed = true;
    if (std::filesystem::is_directory(status)) {
        result.status = Result::Fail(kMsgSettingsFileNotRead, "'" + path.string() + "' is a folder, not a file");
        return result;
    }
    // A pipe would wait for a writer and a device never ends; neither is a settings file.
    if (!std::filesystem::is_regular_file(status)) {
        result.status = Result::Fail(kMsgSettingsFileNotRead, "'" + path.string() + "' is not a regular file");
        return result;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        result.status = Result::Fail(kMsgSettingsFileNotRead, "cannot open '" + path.string() + "': " + std::strerror(errno));
        return result;
    }
    std::string text;
    text.resize(kMaxIniFileBytes + 1);
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    if (in.bad()) {
        result.status = Result::Fail(kMsgSettingsFileNotRead, "cannot read '" + path.string() + "'");
        return result;
    }
    if (text.size() > kMaxIniFileBytes) {
        text.resize(kMaxIniFileBytes);
        result.notSettingsFile = true;
    }
    text = SettingsTextToUtf8(std::move(text));
    if (text.find('\0') != std::string::npos)
        result.notSettingsFile = true;
    result.ini = IniFile::Parse(text);
    return result;
}

Result WriteFileAtomic(const std::filesystem::path &linkOrFile, std::string_view text)
{
    static std::atomic<unsigned> counter{0};
    // Renaming over a symbolic link would replace the link; write the file it points to instead.
    std::filesystem::path path = linkOrFile;
    std::error_code linkEc;
    if (std::filesystem::is_symlink(linkOrFile, linkEc)) {
        const auto resolved = std::filesystem::canonical(linkOrFile, linkEc);
        if (!linkEc)
            path = resolved;
    }
    const std::string target = path.string();
    const std::string temp = target + ".tmp" + std::to_string(::getpid()) + "_" + std::to_string(counter++);
    auto fail = [&](const char *what, int err) {
        ::unlink(temp.c_str());
        return Result::Fail(kMsgSettingsFileNotWritten, std::string(what) + " '" + target + "': " + std::strerror(err));
    };

    mode_t mode = 0644;
    struct stat st {};
    if (::stat(target.c_str(), &st) == 0) {
        // The rename would get past a write protection the user set on purpose.
        if ((st.st_mode & 0222) == 0)
            return Result::Fail(kMsgSettingsFileNotWritten, "'" + target + "' is read-only");
        mode = st.st_mode & 07777; // keep the permissions the user gave the file
    }
    const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd < 0)
        return Result::Fail(kMsgSettingsFileNotWritten, "cannot create '" + temp + "': " + std::strerror(errno));
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            const int err = errno;
            ::close(fd);
            return fail("cannot write", err);
        }
        done += static_cast<std::size_t>(n);
    }
    if (::fsync(fd) != 0) {
        const int err = errno;
        ::close(fd);
        return fail("cannot flush", err);
    }
    if (::close(fd) != 0)
        return fail("cannot close", errno);
    if (::rename(temp.c_str(), target.c_str()) != 0)
        return fail("cannot replace", errno);
    // Make the rename itself durable; a failure here leaves a complete file anyway.
    const auto folder = path.parent_path().empty() ? std::filesystem::path(".") : path.parent_path();
    const int dfd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dfd >= 0) {
        (void)::fsync(dfd);
        ::close(dfd);
    }
    return {};
}

Result WriteIniFile(const std::filesystem::path &path, const IniFile &ini)
{
    return WriteFileAtomic(path, ini.ToText());
}

Result UpdateIniFile(const std::filesystem::path &path, const std::function<void(IniFile &)> &change)
{
    IniReadResult current = ReadIniFile(path);
    if (!current.status.ok())
        return current.status; // writing over a file that could not be read would lose what it holds
    if (current.notSettingsFile)
        return Result::Fail(kMsgSettingsFileNotWritten,
                            "'" + path.string() + "' is not a settings file (it is binary or too large); it was left as it is");
    change(current.ini);
    return WriteIniFile(path, current.ini);
}

} // namespace kestrel
