#include "config/data_folder.h"

#include <cstdlib>
#include <cstring>

#include "config/config_messages.h"

namespace kestrel {

EnvLookup ProcessEnvironment()
{
    return [](const char *name) -> std::optional<std::string> {
        const char *value = std::getenv(name);
        if (!value)
            return std::nullopt;
        return std::string(value);
    };
}

std::filesystem::path ResolveDataFolder(const std::optional<std::string> &commandLineDir, const EnvLookup &env)
{
    if (commandLineDir && !commandLineDir->empty())
        return *commandLineDir;
    auto nonEmpty = [&](const char *name) -> std::optional<std::string> {
        auto v = env(name);
        if (v && !v->empty())
            return v;
        return std::nullopt;
    };
    if (auto dir = nonEmpty("KESTREL_DATA_DIR"))
        return *dir;
    // The base-directory rules call a relative XDG_DATA_HOME invalid: it is ignored.
    if (auto xdg = nonEmpty("XDG_DATA_HOME"); xdg && std::filesystem::path(*xdg).is_absolute())
        return std::filesystem::path(*xdg) / "kestrel";
    if (auto home = nonEmpty("HOME"))
        return std::filesystem::path(*home) / ".local" / "share" / "kestrel";
    return std::filesystem::path("kestrel-data");
}

Result EnsureDataFolder(const std::filesystem::path &dataFolder)
{
    for (const char *sub : {"", "recordings", kProfilesFolder, kThemesFolder}) {
        const auto dir = *sub ? dataFolder / sub : dataFolder;
        std::error_code ec;
        std::filesystem::create_directories(dir, ec);
        if (ec || !std::filesystem::is_directory(dir, ec))
            return Result::Fail(kMsgDataFolderNotCreated,
                                "cannot create the folder '" + dir.string() + "'" + (ec ? ": " + ec.message() : ""));
    }
    return {};
}

std::optional<std::string> DataDirArgument(int argc, const char *const *argv)
{
    std::optional<std::string> found;
    for (int i = 1; i < argc; ++i) {
        const char *arg = argv[i];
        if (std::strcmp(arg, "--data-dir") == 0 && i + 1 < argc)
            found = argv[++i];
        else if (std::strncmp(arg, "--data-dir=", 11) == 0)
            found = arg + 11;
    }
    return found;
}

} // namespace kestrel
