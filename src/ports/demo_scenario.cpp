#include "ports/scenario.h"

#include <cstddef>

namespace kestrel::detail {
extern const unsigned char kDemoScenario[];
extern const std::size_t kDemoScenarioSize;
} // namespace kestrel::detail

namespace kestrel {

std::string_view DemoScenarioText()
{
    return {reinterpret_cast<const char *>(detail::kDemoScenario), detail::kDemoScenarioSize};
}

} // namespace kestrel
