#include "config/environment_save.h"

namespace kestrel {

Result SaveChangedEnvironment(const Environment &env, const std::filesystem::path &file, EnvironmentChangeFlag &flag)
{
    Result saved = SaveEnvironment(env, file);
    if (saved.ok())
        flag.SetEnvironmentUnchanged();
    return saved;
}

} // namespace kestrel
