#pragma once
// The trigger panel of the main window: the environment's trigger list as a
// report-style list (title, number, condition, event, description, the MP at
// which the trigger fired during this recording) with its buttons. A click in
// the first 16 pixels of a row switches the trigger on or off. The list
// operations are TriggerList's; the panel shows them and says when the
// environment changed. The editor dialog is handed in (setEditor), so the
// panel does not depend on it.

#include <QFrame>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "triggers/trigger_list.h"

class QTableWidget;
class QToolButton;

namespace kestrel {

class Prompter;

// Message numbers of the panel.
namespace TriggerPanelMsg {
inline constexpr int ConfirmRemove = 7860;
inline constexpr int FirstHint = 7861;  // the buttons' hints, in button order
inline constexpr int FirstColumn = 7871; // the six column captions
} // namespace TriggerPanelMsg

class TriggerPanel final : public QFrame {
    Q_OBJECT
public:
    // The editor: given the trigger to edit (nullptr for a new one), the confirmed record, or
    // nullopt when the user cancelled.
    using Editor = std::function<std::optional<TriggerDef>(const TriggerDef *current)>;

    TriggerPanel(Prompter &prompter, QWidget *parent = nullptr);

    void setTriggers(TriggerList *list); // the environment's; the panel shows and changes it
    void setEditor(Editor editor) { editor_ = std::move(editor); }
    // The buttons run these actions and follow their enabled state (the window locks them
    // while recording). Order: insert, remove, up, down, edit, enable, disable, reverse, reset.
    void bindActions(const std::vector<class QAction *> &actions);

    void refill();          // after the list was replaced (an environment loaded)
    void InitialLoads();    // texts in the current language
    void setRecording(bool on) { recording_ = on; }
    // "Recognised at MP": cleared when a recording starts, set when a trigger fires.
    void clearRecognised();
    void setRecognised(int number, std::uint32_t mp);

    [[nodiscard]] std::vector<int> columnWidths() const;
    void setColumnWidths(const std::vector<int> &widths); // 0 or missing: the default
    [[nodiscard]] QTableWidget *list() const { return TriggerList_; }
    [[nodiscard]] std::optional<std::size_t> selectedIndex() const;

public slots:
    void btnInsertTriggerClick();
    void btnRemoveTriggerClick();
    void btnMoveTriggerUpClick();
    void btnMoveTriggerDownClick();
    void btnEditTriggerClick();
    void btnEnableAllTriggersClick();
    void btnDisableAllTriggersClick();
    void btnReverseAllTriggersClick();
    void btnResetTrigGridClick(); // columns 1-5 their defaults, the sixth the rest

signals:
    void changed();        // the environment's triggers changed
    void minMaxToggled();  // btnTrigListMinMax: the window shrinks or restores the panel

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fillRow(int row, const TriggerDef &t);
    void select(std::size_t index);
    void afterChange(std::optional<std::size_t> select);

    Prompter &prompter_;
    TriggerList *triggers_ = nullptr;
    Editor editor_;
    bool recording_ = false;
    std::vector<std::uint32_t> recognised_; // by trigger number - 1; UINT32_MAX: not yet
    QTableWidget *TriggerList_ = nullptr;
    std::vector<QToolButton *> buttons_;
    QToolButton *btnTrigListMinMax = nullptr;
};

} // namespace kestrel
