#pragma once
// A main window on the simulated line in a data folder of its own (or a given
// one, for a restart), its questions answered by a ScriptedPrompter; and the
// answer to a file dialog that is about to open.

#include <QAction>
#include <QFileDialog>
#include <QTimer>
#include <QToolButton>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "app/action_registry.h"
#include "app/main_form.h"
#include "base/string_table.h"
#include "support/scripted_prompter.h"
#include "support/temp_dir.h"
#include "support/widget_app.h"

namespace kestrel::test {

struct WindowSetup {
    std::vector<std::string> args;  // after the program name (and --simulate)
    std::string config;             // Kestrel.ini before the start
    Clock *clock = nullptr;
    bool simulate = true;
    int answer = MsgResult::Yes;    // the prompter's answer to every question
    bool ownBoxes = false;          // the window's own message boxes instead of the prompter
    std::filesystem::path folder;   // empty: a fresh temporary one
    ComPort *portA = nullptr, *portB = nullptr;
    int lang = -1;                  // the language before the start; -1: as it is
};

struct MainWindow {
    TempDir own;
    std::filesystem::path dir;
    ScriptedPrompter prompter;
    std::unique_ptr<TFormMain> w;

    explicit MainWindow(const WindowSetup &s = {})
        : dir(s.folder.empty() ? own.path() : s.folder), prompter(s.answer)
    {
        WidgetApp();
        if (s.lang >= 0)
            SetGlobalLang(s.lang);
        std::filesystem::create_directories(dir / "recordings");
        if (!s.config.empty())
            std::ofstream(dir / "Kestrel.ini") << s.config;
        std::vector<std::string> args{"kestrel"};
        if (s.simulate)
            args.push_back("--simulate");
        args.insert(args.end(), s.args.begin(), s.args.end());
        MainFormOptions o;
        o.args = ParseStartupArgs(args);
        o.dataFolder = dir.string() + "/";
        o.prompter = s.ownBoxes ? nullptr : &prompter;
        o.clock = s.clock;
        o.skipUnloadDelay = true;
        o.portA = s.portA;
        o.portB = s.portB;
        w = std::make_unique<TFormMain>(std::move(o));
        if (!s.ownBoxes)
            w->FormShow(); // with its own boxes the first show runs it
    }
    std::string file(const std::string &name) const { return (dir / name).string(); }
    template <class T> T *find(const char *name) { return w->findChild<T *>(name); }
    QAction *act(const char *name) { return w->actions().action(name); }
    void click(const char *button) { find<QToolButton>(button)->click(); }
};

// The file dialog opened next picks path.
inline void PickFile(const std::string &path)
{
    QTimer::singleShot(0, [path] {
        for (QWidget *top : QApplication::topLevelWidgets())
            if (auto *d = qobject_cast<QFileDialog *>(top); d != nullptr && d->isVisible()) {
                d->selectFile(QString::fromStdString(path));
                QMetaObject::invokeMethod(d, "accept");
            }
    });
}

} // namespace kestrel::test
