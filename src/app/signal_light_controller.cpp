#include "app/signal_light_controller.h"

#include "app/signal_light.h"

namespace kestrel {

SignalLightController::SignalLightController(const QString &name, Counter dataCounter, QObject *parent)
    : QObject(parent), dataCounter_(dataCounter)
{
    setObjectName(name);
}

void SignalLightController::setMonitoring(bool on, const MpRecord &newest)
{
    monitoring_ = on;
    lastCount_ = newest.count(dataCounter_);
    if (on)
        return;
    if (dataLight_ != nullptr)
        dataLight_->setLit(false);
    for (const LevelLight &l : levels_)
        l.light->setLit(false);
}

void SignalLightController::follow(const MpRecord &newest)
{
    if (!monitoring_)
        return;
    const std::uint64_t count = newest.count(dataCounter_);
    if (dataLight_ != nullptr)
        dataLight_->setLit(count != lastCount_);
    lastCount_ = count;
    for (const LevelLight &l : levels_)
        l.light->setLit(newest.*l.level != 0);
}

} // namespace kestrel
