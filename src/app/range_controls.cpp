#include "app/range_controls.h"

#include <algorithm>

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>

#include "base/string_table.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }
QString Num(std::uint64_t v) { return QString::number(static_cast<qulonglong>(v)); }

} // namespace

RangeControls::RangeControls(QWidget *parent) : QWidget(parent)
{
    setObjectName("RangeControls");
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(4);
    grid->setColumnStretch(4, 1);

    auto makeEdit = [this](const char *name) {
        auto *e = new QLineEdit(this);
        e->setObjectName(name);
        e->setMaxLength(32);
        e->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        // Room for a 64-bit MP number's usual length; longer ones scroll.
        e->setMinimumWidth(e->fontMetrics().horizontalAdvance(QStringLiteral("9999999999999")) + 12);
        return e;
    };
    auto makeBar = [this](const char *name) {
        auto *b = new QSlider(Qt::Horizontal, this);
        b->setObjectName(name);
        b->setMinimumWidth(160);
        return b;
    };
    auto makeStep = [this](const char *name, Qt::ArrowType arrow) {
        auto *b = new QToolButton(this);
        b->setObjectName(name);
        b->setArrowType(arrow);
        b->setAutoRepeat(true); // held down, it walks
        return b;
    };
    lblMPStart = new QLabel(this);
    lblMPStart->setObjectName("lblMPStart");
    lblMPStop = new QLabel(this);
    lblMPStop->setObjectName("lblMPStop");
    edtMPStart = makeEdit("edtMPStart");
    edtMPStop = makeEdit("edtMPStop");
    lblMPStart->setBuddy(edtMPStart);
    lblMPStop->setBuddy(edtMPStop);
    tbMPStart = makeBar("tbMPStart");
    tbMPStop = makeBar("tbMPStop");
    btnStartDown = makeStep("btnStartDown", Qt::LeftArrow);
    btnStartUp = makeStep("btnStartUp", Qt::RightArrow);
    btnStopDown = makeStep("btnStopDown", Qt::LeftArrow);
    btnStopUp = makeStep("btnStopUp", Qt::RightArrow);
    btnResetRange = new QToolButton(this);
    btnResetRange->setObjectName("btnResetRange");
    btnResetRange->setToolButtonStyle(Qt::ToolButtonTextOnly);
    lblRangeHint = new QLabel(this);
    lblRangeHint->setObjectName("lblRangeHint");
    lblRangeHint->setWordWrap(true);
    lblRangeHint->setMinimumHeight(lblRangeHint->fontMetrics().height() * 2);
    lblRangeHint->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    grid->addWidget(lblMPStart, 0, 0);
    grid->addWidget(edtMPStart, 0, 1);
    grid->addWidget(btnStartDown, 0, 2);
    grid->addWidget(btnStartUp, 0, 3);
    grid->addWidget(tbMPStart, 0, 4);
    grid->addWidget(lblMPStop, 1, 0);
    grid->addWidget(edtMPStop, 1, 1);
    grid->addWidget(btnStopDown, 1, 2);
    grid->addWidget(btnStopUp, 1, 3);
    grid->addWidget(tbMPStop, 1, 4);
    grid->addWidget(btnResetRange, 2, 1, 1, 3, Qt::AlignLeft);
    grid->addWidget(lblRangeHint, 3, 0, 1, 5);

    connect(tbMPStart, &QSlider::valueChanged, this, &RangeControls::SynchronizeByTrackBars);
    connect(tbMPStop, &QSlider::valueChanged, this, &RangeControls::SynchronizeByTrackBars);
    connect(edtMPStart, &QLineEdit::textEdited, this, &RangeControls::SynchronizeByEditFields);
    connect(edtMPStop, &QLineEdit::textEdited, this, &RangeControls::SynchronizeByEditFields);
    connect(edtMPStart, &QLineEdit::editingFinished, this, &RangeControls::edtMPStartExit);
    connect(edtMPStop, &QLineEdit::editingFinished, this, &RangeControls::edtMPStopExit);
    connect(btnStartUp, &QToolButton::clicked, this, &RangeControls::btnStartUpClick);
    connect(btnStartDown, &QToolButton::clicked, this, &RangeControls::btnStartDownClick);
    connect(btnStopUp, &QToolButton::clicked, this, &RangeControls::btnStopUpClick);
    connect(btnStopDown, &QToolButton::clicked, this, &RangeControls::btnStopDownClick);
    connect(btnResetRange, &QToolButton::clicked, this, &RangeControls::btnResetRangeClick);

    InitialLoads();
    setLimits(1, 0);
}

void RangeControls::InitialLoads()
{
    using namespace RangeControlsMsg;
    lblMPStart->setText(S(FirstMp));
    lblMPStop->setText(S(LastMp));
    btnResetRange->setText(S(ResetRange));
    for (QToolButton *b : {btnStartUp, btnStopUp})
        b->setToolTip(S(StepUp));
    for (QToolButton *b : {btnStartDown, btnStopDown})
        b->setToolTip(S(StepDown));
    const QString tip = scale_.empty() ? S(NoMps)
                                       : S(FieldHint).arg(Num(scale_.first()), Num(scale_.last()));
    for (QWidget *w : {static_cast<QWidget *>(edtMPStart), static_cast<QWidget *>(edtMPStop),
                       static_cast<QWidget *>(tbMPStart), static_cast<QWidget *>(tbMPStop)})
        w->setToolTip(tip);
    showHint({}); // a note in the old language would only confuse
}

void RangeControls::setLimits(std::uint64_t first, std::uint64_t last)
{
    const bool wasFull = scale_.empty() || (ends_.from == scale_.first() && ends_.to == scale_.last());
    scale_ = TrackScale(first, last);
    for (QSlider *bar : {tbMPStart, tbMPStop}) {
        const QSignalBlocker quiet(bar);
        bar->setRange(0, scale_.barMaximum());
        bar->setPageStep(std::max(1, scale_.barMaximum() / 20));
    }
    if (scale_.empty()) {
        ends_ = {};
        for (QLineEdit *e : {edtMPStart, edtMPStop})
            e->clear();
    } else {
        // Clamping keeps the order of the two ends.
        apply(wasFull ? MpRangeEnds{scale_.first(), scale_.last()}
                      : MpRangeEnds{scale_.Clamp(ends_.from), scale_.Clamp(ends_.to)});
    }
    InitialLoads();
    updateEnabled();
}

void RangeControls::setRange(std::uint64_t from, std::uint64_t to)
{
    apply(MoveStop(MoveStart(ends_, from, scale_), to, scale_));
}

QString RangeControls::hint() const { return lblRangeHint->text(); }

void RangeControls::apply(MpRangeEnds ends)
{
    if (scale_.empty())
        return;
    const bool changed = !(ends == ends_);
    ends_ = ends;
    const QSignalBlocker quietStart(tbMPStart), quietStop(tbMPStop);
    tbMPStart->setValue(scale_.ToBar(ends_.from));
    tbMPStop->setValue(scale_.ToBar(ends_.to));
    edtMPStart->setText(Num(ends_.from));
    edtMPStop->setText(Num(ends_.to));
    if (changed)
        emit rangeChanged(ends_.from, ends_.to);
}

void RangeControls::SynchronizeByTrackBars()
{
    if (scale_.empty())
        return;
    // Only a bar the user moved counts: the other may stand on a shared position of a
    // scaled bar, and reading it back would move its end to the first MP there.
    MpRangeEnds next = ends_;
    if (tbMPStart->value() != scale_.ToBar(ends_.from))
        next = MoveStart(next, scale_.FromBar(tbMPStart->value()), scale_);
    else if (tbMPStop->value() != scale_.ToBar(ends_.to))
        next = MoveStop(next, scale_.FromBar(tbMPStop->value()), scale_);
    showHint({});
    apply(next);
}

void RangeControls::SynchronizeByEditFields()
{
    // While the user types only the bars follow; the range itself is taken when the
    // field is left, so that a half-typed number never pushes the other end away.
    for (auto [edit, bar] : {std::pair{edtMPStart, tbMPStart}, {edtMPStop, tbMPStop}}) {
        const MpFieldValue v = ReadMpField(edit->text().toStdString(), scale_, 0);
        if (v.verdict == FieldVerdict::Valid) {
            const QSignalBlocker quiet(bar);
            bar->setValue(scale_.ToBar(v.value));
        }
    }
}

void RangeControls::leaveField(QLineEdit *field, bool start)
{
    if (scale_.empty())
        return;
    const QString typed = field->text();
    const std::uint64_t lastValid = start ? ends_.from : ends_.to;
    const MpFieldValue v = ReadMpField(typed.toStdString(), scale_, lastValid);
    using namespace RangeControlsMsg;
    switch (v.verdict) {
    case FieldVerdict::Valid:
        showHint({});
        break;
    case FieldVerdict::NotANumber:
        showHint(S(NotANumber).arg(typed.trimmed(), Num(v.value)));
        break;
    case FieldVerdict::OutOfRange:
        showHint(S(OutOfRange).arg(typed.trimmed(), Num(scale_.first()), Num(scale_.last()), Num(v.value)));
        break;
    }
    // The field is written back even when the range stays: "0042" or " 7" read as what they count.
    apply(start ? MoveStart(ends_, v.value, scale_) : MoveStop(ends_, v.value, scale_));
}

void RangeControls::edtMPStartExit() { leaveField(edtMPStart, true); }
void RangeControls::edtMPStopExit() { leaveField(edtMPStop, false); }
void RangeControls::btnStartUpClick() { apply(StepStart(ends_, +1, scale_)); }
void RangeControls::btnStartDownClick() { apply(StepStart(ends_, -1, scale_)); }
void RangeControls::btnStopUpClick() { apply(StepStop(ends_, +1, scale_)); }
void RangeControls::btnStopDownClick() { apply(StepStop(ends_, -1, scale_)); }
void RangeControls::btnResetRangeClick()
{
    showHint({});
    apply({scale_.first(), scale_.last()});
}

void RangeControls::showHint(const QString &text) { lblRangeHint->setText(text); }

void RangeControls::updateEnabled()
{
    const bool any = !scale_.empty();
    for (QWidget *w : findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        if (w != lblRangeHint)
            w->setEnabled(any);
}

} // namespace kestrel
