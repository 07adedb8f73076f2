#pragma once
// Records a scenario into a record file through the real recording session
// (simulated ports, capture, recorder, writer) on a manual clock, so the time
// stamps are exactly what a recorder writes for that line: bytes handed over
// in chunks, one character time apart inside a burst. The clock moves in
// steps of stepNs; give waits that are multiples of it to land on them.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "base/reporter.h"
#include "capture/recording_session.h"
#include "ports/scenario.h"
#include "ports/sim_port.h"
#include "record/clock.h"
#include "support/event_loop.h"
#include "support/scripted_prompter.h"

namespace kestrel::test {

inline void RecordScenario(const std::string &text, const std::string &path, const PortComboTexts &settings,
                           std::int64_t stepNs = 250'000)
{
    TestApp();
    ScenarioError error;
    std::optional<Scenario> scenario = ParseScenario(text, error);
    ASSERT_TRUE(scenario) << error.text();
    ManualClock clock(45000.5);
    ScriptedPrompter prompter;
    PromptReporter reporter(prompter);
    std::unique_ptr<RecordingSession> session = RecordingSession::Simulated(std::move(*scenario), reporter, &clock);
    session->file().setPath(path);
    session->recorder().setDelay([](std::chrono::milliseconds) {});
    session->recorder().setAppendReplace(RecordMode::Replace);
    ASSERT_TRUE(session->applySettings(settings));
    session->record();
    ASSERT_TRUE(session->recording());
    SimLine &line = *session->simLine();
    line.restart();
    for (int step = 0; !line.finished(); ++step) {
        ASSERT_LT(step, 4'000'000) << "the scenario does not end";
        clock.advance(stepNs);
        line.poll();
        SpinPending();
    }
    session->stop();
    SpinPending();
}

} // namespace kestrel::test
