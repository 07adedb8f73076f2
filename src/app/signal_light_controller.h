#pragma once
// The lights of one monitored port: a data light that flashes when the port
// received since the last look, and one lamp per status line it follows.
// Port A (SlcA) has D2 and M2, M1, M5, M3; port B (SlcB) has D1 and S2, S1.
// Dark and still while monitoring is off.

#include <QObject>
#include <cstdint>
#include <vector>

#include "record/mp_record.h"

namespace kestrel {

class SignalLight;

class SignalLightController final : public QObject {
    Q_OBJECT
public:
    using Level = std::uint8_t MpRecord::*;

    SignalLightController(const QString &name, Counter dataCounter, QObject *parent = nullptr);

    void setDataLight(SignalLight *light) { dataLight_ = light; }
    void addLevelLight(SignalLight *light, Level level) { levels_.push_back({light, level}); }

    // newest: the MP the lights start from (its data count is the baseline).
    void setMonitoring(bool on, const MpRecord &newest);
    [[nodiscard]] bool monitoring() const { return monitoring_; }
    // Shows the newest MP; nothing while monitoring is off.
    void follow(const MpRecord &newest);

private:
    struct LevelLight {
        SignalLight *light;
        Level level;
    };
    Counter dataCounter_;
    SignalLight *dataLight_ = nullptr;
    std::vector<LevelLight> levels_;
    std::uint64_t lastCount_ = 0;
    bool monitoring_ = false;
};

} // namespace kestrel
