#include "config/options_fields.h"

#include "config/config_messages.h"
#include "config/ini_file.h"

namespace kestrel {

int ValueListName(PortValueKind kind)
{
    switch (kind) {
    case PortValueKind::BaudRates: return 9260;
    case PortValueKind::DataBits: return 9261;
    case PortValueKind::Parities: return 9263;
    case PortValueKind::StopBits: break;
    }
    return 9262;
}

std::vector<std::string> ParseValueListField(std::string_view text)
{
    std::string flat(text);
    for (char &c : flat)
        if (c == '\n' || c == '\r')
            c = ',';
    std::vector<std::string> values;
    for (std::string &item : SplitCommaText(flat))
        if (!item.empty())
            values.push_back(std::move(item));
    return values;
}

std::string ValueListFieldText(const std::vector<std::string> &values) { return JoinCommaText(values); }

const std::vector<std::string> &ValuesOf(const PortValueLists &lists, PortValueKind kind)
{
    switch (kind) {
    case PortValueKind::BaudRates: return lists.baudRates;
    case PortValueKind::DataBits: return lists.dataBits;
    case PortValueKind::Parities: return lists.parities;
    case PortValueKind::StopBits: break;
    }
    return lists.stopBits;
}

OfferedValuesCheck CheckOfferedValues(const PortValueLists &lists)
{
    for (PortValueKind kind :
         {PortValueKind::BaudRates, PortValueKind::DataBits, PortValueKind::Parities, PortValueKind::StopBits}) {
        const std::vector<std::string> &values = ValuesOf(lists, kind);
        if (values.empty())
            return {Result::Fail(kMsgEmptyValueList), kind};
        for (const std::string &v : values)
            if (!OfferableValue(kind, v))
                return {Result::Fail(kMsgValueNotOffered, v), kind};
    }
    return {};
}

HardwareProfile ProfileFieldsOnShow(const std::filesystem::path &dataFolder, const ProgramConfig &cfg)
{
    HardwareProfile shown = ProfileFieldsOfFile(dataFolder, cfg.Profile, cfg.portStandards).profile;
    shown.lists = cfg.portStandards;
    return shown;
}

ProfileFieldsRead ProfileFieldsOfFile(const std::filesystem::path &dataFolder, const std::string &name,
                                      const PortValueLists &listsShown)
{
    ProfileFieldsRead read;
    read.profile.lists = listsShown;
    if (!IsValidProfileFileName(name))
        return read;
    const auto path = ProfilePath(dataFolder, name);
    const IniReadResult file = ReadIniFile(path);
    if (!file.status.ok()) {
        read.status = file.status;
    } else if (file.notSettingsFile) {
        read.status = Result::Fail(kMsgSettingsFileNotRead,
                                   "'" + path.string() + "' is not a settings file (it is binary or too large)");
    } else {
        read.profile = ReadHardwareProfile(file.ini, listsShown);
    }
    return read;
}

} // namespace kestrel
