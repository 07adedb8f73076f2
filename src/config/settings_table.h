#pragma once
// Settings declared once. Each settings file is one table of entries
// {section, key, type, default, member}, in the order the file is written;
// the same table loads the file, stores it and gives a fresh object its
// defaults, so a key cannot be spelt one way for loading and another way for
// saving. A rule that is not a plain key (a key written only when set, a list
// of numbered sections) is a Custom entry: small functions at its place in
// the table.
//
//     constexpr auto kTable = SettingsTable(
//         IntSetting<&Config::window, &WindowPlacement::Width>("Window", "Width", 800),
//         BoolSetting<&Config::Append>("Recorder", "Append", true));
//
// The template arguments are the path of member pointers from the table's
// owner to the value.

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "config/date_time_text.h"
#include "config/ini_file.h"

namespace kestrel {

enum class SettingType {
    Int,          // decimal text
    Bool,         // "1" / "0"; read as an integer, non-zero is true
    Text,         // the text as it stands
    CommaList,    // string-list comma text
    DateTime,     // date-time text; missing or unreadable gives the moment of loading
    IntNumbered,  // key0, key1, ...: one key per element of a fixed-size list
    TextNumbered, // the same for texts
    TextLines,    // key0, key1, ... up to the first missing number; the section holds nothing else
    Custom,       // a rule of its own
};

// Which way an entry goes. A store-only entry is written and never read back by
// the table (or read by a rule of its own); a load-only entry is kept in the
// file by hand and never written.
enum class SettingUse { LoadAndStore, StoreOnly, LoadOnly };

// What loading needs from the running program.
struct SettingsLoadContext {
    double now = 0.0; // the local date-time of loading, days since 1899-12-30
};

template <class Owner>
struct Setting {
    const char *section = nullptr; // nullptr: the section the caller names (a trigger's, say)
    const char *key = nullptr;     // the key, or the base word of numbered keys
    SettingType type = SettingType::Int;
    SettingUse use = SettingUse::LoadAndStore;
    int group = 0; // a part of the file that is loaded on its own (one form's keys)

    // Default of Int and Bool (0 / 1), of Text and TextNumbered.
    int number = 0;
    const char *text = "";
    // Default of a CommaList; nullptr keeps the list in use.
    const std::vector<std::string> &(*list)() = nullptr;
    // A missing key keeps the value the object had (the caller's built-in one).
    bool keepWhenMissing = false;
    int firstNumber = 0; // numbered keys start here

    // Where the value lives; the one matching the type is set.
    int &(*intAt)(Owner &) = nullptr;
    bool &(*boolAt)(Owner &) = nullptr;
    std::string &(*textAt)(Owner &) = nullptr;
    std::vector<std::string> &(*textsAt)(Owner &) = nullptr; // CommaList, TextLines
    double &(*timeAt)(Owner &) = nullptr;
    std::span<int> (*intListAt)(Owner &) = nullptr;
    std::span<std::string> (*textListAt)(Owner &) = nullptr;

    // Custom entries.
    void (*load)(const IniFile &, std::string_view section, Owner &, const SettingsLoadContext &) = nullptr;
    void (*store)(IniFile &, std::string_view section, const Owner &) = nullptr;
    void (*reset)(Owner &) = nullptr;

    [[nodiscard]] constexpr Setting Use(SettingUse u) const
    {
        Setting s = *this;
        s.use = u;
        return s;
    }
    [[nodiscard]] constexpr Setting InGroup(int g) const
    {
        Setting s = *this;
        s.group = g;
        return s;
    }
    [[nodiscard]] constexpr Setting KeepWhenMissing() const
    {
        Setting s = *this;
        s.keepWhenMissing = true;
        return s;
    }
};

// --- member paths ---

namespace settings_detail {

template <class M>
struct MemberOf;
template <class C, class T>
struct MemberOf<T C::*> {
    using Class = C;
    using Type = T;
};

template <auto First, auto... Rest>
struct Path {
    using Owner = typename MemberOf<decltype(First)>::Class;
    using Value = typename Path<Rest...>::Value;
    static Value &Get(Owner &o) { return Path<Rest...>::Get(o.*First); }
};
template <auto Last>
struct Path<Last> {
    using Owner = typename MemberOf<decltype(Last)>::Class;
    using Value = typename MemberOf<decltype(Last)>::Type;
    static Value &Get(Owner &o) { return o.*Last; }
};

template <auto... P>
using OwnerOf = typename Path<P...>::Owner;

template <auto... P>
std::span<typename Path<P...>::Value::value_type> Span(OwnerOf<P...> &o)
{
    return Path<P...>::Get(o);
}

// Element I of a {key, member} list, reached through the path Outer... first.
template <const auto &Keys, std::size_t I, auto... Outer>
struct ListedMember {
    template <class Owner>
    static auto &Get(Owner &o)
    {
        if constexpr (sizeof...(Outer) == 0)
            return o.*(Keys[I].field);
        else
            return Path<Outer...>::Get(o).*(Keys[I].field);
    }
};

// The owner of a table over a {key, member} list: the list's struct, or the start of Outer...
template <class Holder, auto... Outer>
struct TopOf {
    using type = typename Path<Outer...>::Owner;
};
template <class Holder>
struct TopOf<Holder> {
    using type = Holder;
};

template <auto... P>
constexpr Setting<OwnerOf<P...>> Entry(const char *section, const char *key, SettingType type)
{
    Setting<OwnerOf<P...>> s;
    s.section = section;
    s.key = key;
    s.type = type;
    return s;
}

} // namespace settings_detail

template <auto... P>
constexpr Setting<settings_detail::OwnerOf<P...>> IntSetting(const char *section, const char *key, int def)
{
    auto s = settings_detail::Entry<P...>(section, key, SettingType::Int);
    s.number = def;
    s.intAt = &settings_detail::Path<P...>::Get;
    return s;
}

template <auto... P>
constexpr Setting<settings_detail::OwnerOf<P...>> BoolSetting(const char *section, const char *key, bool def)
{
    auto s = settings_detail::Entry<P...>(section, key, SettingType::Bool);
    s.number = def ? 1 : 0;
    s.boolAt = &settings_detail::Path<P...>::Get;
    return s;
}

template <auto... P>
constexpr Setting<settings_detail::OwnerOf<P...>> TextSetting(const char *section, const char *key, const char *def)
{
    auto s = settings_detail::Entry<P...>(section, key, SettingType::Text);
    s.text = def;
    s.textAt = &settings_detail::Path<P...>::Get;
    return s;
}

// A missing key gives the list def returns.
template <auto... P>
constexpr Setting<settings_detail::OwnerOf<P...>> CommaListSetting(const char *section, const char *key,
                                                                   const std::vector<std::string> &(*def)())
{
    auto s = settings_detail::Entry<P...>(section, key, SettingType::CommaList);
    s.list = def;
    s.textsAt = &settings_detail::Path<P...>::Get;
    return s;
}

// No default: a missing key keeps the list in use. (An overload rather than a
// null test: comparing a function's address is no constant expression in a
// sanitized build.)
template <auto... P>
constexpr Setting<settings_detail::OwnerOf<P...>> CommaListSetting(const char *section, const char *key, std::nullptr_t)
{
    auto s = settings_detail::Entry<P...>(section, key, SettingType::CommaList);
    s.keepWhenMissing = true;
    s.textsAt = &settings_detail::Path<P...>::Get;
    return s;
}

template <auto... P>
constexpr Setting<settings_detail::OwnerOf<P...>> DateTimeSetting(const char *section, const char *key)
{
    auto s = settings_detail::Entry<P...>(section, key, SettingType::DateTime);
    s.timeAt = &settings_detail::Path<P...>::Get;
    return s;
}

// key<first>, key<first+1>, ... for each element of a list whose size the object fixes;
// a missing key keeps the element.
template <auto... P>
constexpr Setting<settings_detail::OwnerOf<P...>> NumberedIntSetting(const char *section, const char *key, int first)
{
    auto s = settings_detail::Entry<P...>(section, key, SettingType::IntNumbered);
    s.firstNumber = first;
    s.keepWhenMissing = true;
    s.intListAt = &settings_detail::Span<P...>;
    return s;
}

template <auto... P>
constexpr Setting<settings_detail::OwnerOf<P...>> NumberedTextSetting(const char *section, const char *key, int first,
                                                                      const char *def)
{
    auto s = settings_detail::Entry<P...>(section, key, SettingType::TextNumbered);
    s.firstNumber = first;
    s.text = def;
    s.textListAt = &settings_detail::Span<P...>;
    return s;
}

// key0, key1, ... as long as the numbers run without a gap; the section is erased
// before writing, so a shorter list leaves no lines of a longer older one.
template <auto... P>
constexpr Setting<settings_detail::OwnerOf<P...>> TextLinesSetting(const char *section, const char *key)
{
    auto s = settings_detail::Entry<P...>(section, key, SettingType::TextLines);
    s.textsAt = &settings_detail::Path<P...>::Get;
    return s;
}

template <class Owner>
constexpr Setting<Owner> CustomSetting(
    const char *section, const char *key,
    void (*load)(const IniFile &, std::string_view, Owner &, const SettingsLoadContext &),
    void (*store)(IniFile &, std::string_view, const Owner &), void (*reset)(Owner &))
{
    Setting<Owner> s;
    s.section = section;
    s.key = key;
    s.type = SettingType::Custom;
    s.load = load;
    s.store = store;
    s.reset = reset;
    return s;
}

// One entry per element of a {key, field} list (such as a trigger's signal-edge
// keys), all with the same default; Outer... leads from the owner to the
// struct the fields belong to.
template <const auto &Keys, auto... Outer>
constexpr auto SettingsFromKeyList(const char *section, auto def)
{
    using Field = std::remove_cvref_t<decltype(Keys[0].field)>;
    using Holder = typename settings_detail::MemberOf<Field>::Class;
    using Value = typename settings_detail::MemberOf<Field>::Type;
    using Top = typename settings_detail::TopOf<Holder, Outer...>::type;
    constexpr std::size_t n = std::size(Keys);
    return [&]<std::size_t... I>(std::index_sequence<I...>) {
        std::array<Setting<Top>, n> out{};
        auto fill = [&](Setting<Top> &s, const char *key, auto at) {
            s.section = section;
            s.key = key;
            if constexpr (std::is_same_v<Value, bool>) {
                s.type = SettingType::Bool;
                s.number = def ? 1 : 0;
                s.boolAt = at;
            } else if constexpr (std::is_same_v<Value, int>) {
                s.type = SettingType::Int;
                s.number = def;
                s.intAt = at;
            } else {
                static_assert(std::is_same_v<Value, std::string>);
                s.type = SettingType::Text;
                s.text = def;
                s.textAt = at;
            }
        };
        (fill(out[I], Keys[I].key,
              static_cast<Value &(*)(Top &)>(&settings_detail::ListedMember<Keys, I, Outer...>::template Get<Top>)),
         ...);
        return out;
    }(std::make_index_sequence<n>{});
}

// --- tables ---

namespace settings_detail {
template <class T>
struct Part;
template <class Owner>
struct Part<Setting<Owner>> {
    using Owner_ = Owner;
    static constexpr std::size_t size = 1;
};
template <class Owner, std::size_t N>
struct Part<std::array<Setting<Owner>, N>> {
    using Owner_ = Owner;
    static constexpr std::size_t size = N;
};
template <class Owner, std::size_t N>
constexpr void Put(std::array<Setting<Owner>, N> &out, std::size_t &at, const Setting<Owner> &s) { out[at++] = s; }
template <class Owner, std::size_t N, std::size_t M>
constexpr void Put(std::array<Setting<Owner>, N> &out, std::size_t &at, const std::array<Setting<Owner>, M> &part)
{
    for (const auto &s : part)
        out[at++] = s;
}
} // namespace settings_detail

// Entries and groups of entries joined in the order given.
template <class First, class... Rest>
constexpr auto SettingsTable(const First &first, const Rest &...rest)
{
    using Owner = typename settings_detail::Part<First>::Owner_;
    constexpr std::size_t n = (settings_detail::Part<First>::size + ... + settings_detail::Part<Rest>::size);
    std::array<Setting<Owner>, n> out{};
    std::size_t at = 0;
    settings_detail::Put(out, at, first);
    (settings_detail::Put(out, at, rest), ...);
    return out;
}

// Every entry of a group of entries moved into one loading group.
template <class Owner, std::size_t N>
constexpr std::array<Setting<Owner>, N> InGroup(std::array<Setting<Owner>, N> part, int group)
{
    for (auto &s : part)
        s.group = group;
    return part;
}

// --- what the tables do ---

// One entry, whatever its use; section stands in for an entry without one.
template <class Owner>
void LoadSetting(const IniFile &ini, const Setting<Owner> &s, Owner &o, const SettingsLoadContext &ctx = {},
                 std::string_view section = {})
{
    const std::string_view sec = s.section ? std::string_view(s.section) : section;
    switch (s.type) {
    case SettingType::Int: {
        int &v = s.intAt(o);
        v = ini.ReadInteger(sec, s.key, s.keepWhenMissing ? v : s.number);
        break;
    }
    case SettingType::Bool: {
        bool &v = s.boolAt(o);
        v = ini.ReadBool(sec, s.key, s.keepWhenMissing ? v : s.number != 0);
        break;
    }
    case SettingType::Text: {
        std::string &v = s.textAt(o);
        v = ini.ReadString(sec, s.key, s.keepWhenMissing ? std::string_view(v) : std::string_view(s.text));
        break;
    }
    case SettingType::CommaList: {
        std::vector<std::string> &v = s.textsAt(o);
        v = ini.ReadCommaList(sec, s.key, s.list && !s.keepWhenMissing ? s.list() : v);
        break;
    }
    case SettingType::DateTime: {
        const auto t = ParseSettingsDateTime(ini.ReadString(sec, s.key, ""));
        s.timeAt(o) = t ? *t : ctx.now;
        break;
    }
    case SettingType::IntNumbered: {
        const std::span<int> v = s.intListAt(o);
        for (std::size_t i = 0; i < v.size(); ++i)
            v[i] = ini.ReadInteger(sec, NumberedName(s.key, s.firstNumber + static_cast<long long>(i)), v[i]);
        break;
    }
    case SettingType::TextNumbered: {
        const std::span<std::string> v = s.textListAt(o);
        for (std::size_t i = 0; i < v.size(); ++i)
            v[i] = ini.ReadString(sec, NumberedName(s.key, s.firstNumber + static_cast<long long>(i)),
                                  s.keepWhenMissing ? std::string_view(v[i]) : std::string_view(s.text));
        break;
    }
    case SettingType::TextLines: {
        std::vector<std::string> &v = s.textsAt(o);
        v.clear();
        // The first missing number ends the list.
        for (long long i = s.firstNumber;; ++i) {
            const std::string key = NumberedName(s.key, i);
            if (!ini.ValueExists(sec, key))
                break;
            v.push_back(ini.ReadString(sec, key, ""));
        }
        break;
    }
    case SettingType::Custom:
        if (s.load)
            s.load(ini, sec, o, ctx);
        break;
    }
}

template <class Owner>
void StoreSetting(IniFile &ini, const Setting<Owner> &s, const Owner &owner, std::string_view section = {})
{
    const std::string_view sec = s.section ? std::string_view(s.section) : section;
    Owner &o = const_cast<Owner &>(owner); // the accessors serve both ways; storing only reads through them
    switch (s.type) {
    case SettingType::Int:
        ini.WriteInteger(sec, s.key, s.intAt(o));
        break;
    case SettingType::Bool:
        ini.WriteBool(sec, s.key, s.boolAt(o));
        break;
    case SettingType::Text:
        ini.WriteString(sec, s.key, s.textAt(o));
        break;
    case SettingType::CommaList:
        ini.WriteCommaList(sec, s.key, s.textsAt(o));
        break;
    case SettingType::DateTime:
        ini.WriteString(sec, s.key, FormatSettingsDateTime(s.timeAt(o)));
        break;
    case SettingType::IntNumbered: {
        const std::span<int> v = s.intListAt(o);
        for (std::size_t i = 0; i < v.size(); ++i)
            ini.WriteInteger(sec, NumberedName(s.key, s.firstNumber + static_cast<long long>(i)), v[i]);
        break;
    }
    case SettingType::TextNumbered: {
        const std::span<std::string> v = s.textListAt(o);
        for (std::size_t i = 0; i < v.size(); ++i)
            ini.WriteString(sec, NumberedName(s.key, s.firstNumber + static_cast<long long>(i)), v[i]);
        break;
    }
    case SettingType::TextLines: {
        ini.EraseSection(sec);
        const std::vector<std::string> &v = s.textsAt(o);
        for (std::size_t i = 0; i < v.size(); ++i)
            ini.WriteString(sec, NumberedName(s.key, s.firstNumber + static_cast<long long>(i)), v[i]);
        break;
    }
    case SettingType::Custom:
        if (s.store)
            s.store(ini, sec, owner);
        break;
    }
}

// The default an entry gives a fresh object; kept values (built-in widths, the lists in
// use, a date-time that only loading knows) are left alone.
template <class Owner>
void ResetSetting(const Setting<Owner> &s, Owner &o)
{
    switch (s.type) {
    case SettingType::Int:
        if (!s.keepWhenMissing)
            s.intAt(o) = s.number;
        break;
    case SettingType::Bool:
        if (!s.keepWhenMissing)
            s.boolAt(o) = s.number != 0;
        break;
    case SettingType::Text:
        if (!s.keepWhenMissing)
            s.textAt(o) = s.text;
        break;
    case SettingType::CommaList:
        if (s.list && !s.keepWhenMissing)
            s.textsAt(o) = s.list();
        break;
    case SettingType::TextNumbered:
        if (!s.keepWhenMissing)
            for (std::string &v : s.textListAt(o))
                v = s.text;
        break;
    case SettingType::TextLines:
        s.textsAt(o).clear();
        break;
    case SettingType::DateTime:
    case SettingType::IntNumbered:
        break;
    case SettingType::Custom:
        if (s.reset)
            s.reset(o);
        break;
    }
}

// Loads the entries of one group that are read back; section stands in for entries without one.
template <class Owner>
void LoadSettings(const IniFile &ini, std::span<const Setting<Owner>> table, Owner &o,
                  const SettingsLoadContext &ctx = {}, std::string_view section = {}, int group = 0)
{
    for (const auto &s : table) {
        if (s.group == group && s.use != SettingUse::StoreOnly)
            LoadSetting(ini, s, o, ctx, section);
    }
}

// Stores every entry that is written, in the table's order.
template <class Owner>
void StoreSettings(IniFile &ini, std::span<const Setting<Owner>> table, const Owner &o, std::string_view section = {})
{
    for (const auto &s : table) {
        if (s.use != SettingUse::LoadOnly)
            StoreSetting(ini, s, o, section);
    }
}

template <class Owner>
void ResetSettings(std::span<const Setting<Owner>> table, Owner &o)
{
    for (const auto &s : table)
        ResetSetting(s, o);
}

} // namespace kestrel
