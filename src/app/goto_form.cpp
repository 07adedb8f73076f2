#include "app/goto_form.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDateEdit>
#include <QDateTime>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTabWidget>
#include <QTimeEdit>
#include <QVBoxLayout>

#include "app/help_request.h"
#include "app/pattern_fields.h"
#include "app/range_controls.h"
#include "app/up_down.h"
#include "base/prompt.h"
#include "base/string_table.h"
#include "present/delta_measure.h"
#include "present/grid/record_grid.h"
#include "present/time_text.h"
#include "record/record_reader.h"
#include "search/search.h"

namespace kestrel {

namespace {

QString S(int n) { return QString::fromStdString(Str(n)); }

// Texts of the window.
namespace Txt {
constexpr int Caption = 7734, SearchEvent = 7735, Delta = 7736, TriggerPoint = 7737, Event = 7738;
constexpr int Data = 7739, Signal = 7740, Error = 7741, Time = 7742, D1 = 7743, D2 = 7744;
constexpr int LogicalAnd = 7745, Ignore = 7746, Low = 7747, High = 7748, Pe = 7749, Fe = 7750, Le = 7751;
constexpr int TimeValue = 7752, Forward = 7753, Backward = 7754, Stop = 7755, Cancel = 7756, Help = 7757;
constexpr int AbsoluteTime = 7758, DeltaTime = 7759, Seconds = 7760, Millis = 7761, Micros = 7762;
constexpr int Rounded = 7763, GotoMp = 7764, GotoTrigger = 7765, BackToStart = 7766, Unreadable = 7767;
} // namespace Txt

// How often a search lets the event loop run.
constexpr qint64 kPumpEveryMs = 8;

// The highest trigger number a mark can carry.
constexpr int kMaxTriggerPoint = 256;

// Line names are the same in both languages.
constexpr const char *kSignalNames[6] = {"S1/DTR", "M1/DSR", "S2/RTS", "M2/CTS", "M5/DCD", "M3/RNG"};

QLineEdit *ReadOnlyField(QWidget *parent, const char *name)
{
    auto *e = new QLineEdit(parent);
    e->setObjectName(name);
    e->setReadOnly(true);
    return e;
}

} // namespace

TFormGoto::TFormGoto(Prompter &prompter, grid::RecordGrid &grid, std::function<std::string()> recordPath,
                     QWidget *parent)
    : QDialog(parent, Qt::Tool), prompter_(prompter), grid_(grid), recordPath_(std::move(recordPath))
{
    setObjectName("TFormGoto");
    auto *box = new QVBoxLayout(this);
    pgGotoSearch = new QTabWidget(this);
    pgGotoSearch->setObjectName("pgGotoSearch");
    pgGotoSearch->addTab(buildSearchPage(), QString());
    pgGotoSearch->addTab(buildDeltaPage(), QString());
    pgGotoSearch->addTab(buildTriggerPage(), QString());
    pgGotoSearch->addTab(buildMpPage(), QString());
    box->addWidget(pgGotoSearch, 1);

    ProgressBar1 = new QProgressBar(this);
    ProgressBar1->setObjectName("ProgressBar1");
    ProgressBar1->setRange(0, 100);
    ProgressBar1->setValue(0);
    box->addWidget(ProgressBar1);

    auto *buttons = new QHBoxLayout;
    auto button = [&](QPushButton *&b, const char *name, int text) {
        b = new QPushButton(this);
        b->setObjectName(name);
        b->setAutoDefault(false);
        texts_.append({b, text});
        buttons->addWidget(b);
    };
    button(btnSearchReverse, "btnSearchReverse", Txt::Backward);
    button(btnSearchForward, "btnSearchForward", Txt::Forward);
    button(btnSearchStop, "btnSearchStop", Txt::Stop);
    buttons->addStretch(1);
    button(btnCancel, "btnCancel", Txt::Cancel);
    button(btnHelp, "btnHelp", Txt::Help);
    box->addLayout(buttons);
    btnSearchStop->setEnabled(false);
    // F1 is the main window's Help action, which a tool window shares.
    connect(btnHelp, &QPushButton::clicked, this, [this] { ShowHelpFor(this); });
    connect(btnSearchForward, &QPushButton::clicked, this, &TFormGoto::btnSearchForwardClick);
    connect(btnSearchReverse, &QPushButton::clicked, this, &TFormGoto::btnSearchReverseClick);
    connect(btnSearchStop, &QPushButton::clicked, this, &TFormGoto::btnSearchStopClick);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::close);
    // Forward and backward belong to the search page only.
    connect(pgGotoSearch, &QTabWidget::currentChanged, this, [this](int page) {
        btnSearchForward->setVisible(page == GotoPage::Search);
        btnSearchReverse->setVisible(page == GotoPage::Search);
        btnSearchStop->setVisible(page == GotoPage::Search);
        ProgressBar1->setVisible(page == GotoPage::Search);
    });
    InitialLoads();
}

TFormGoto::~TFormGoto() { stop_ = true; }

QWidget *TFormGoto::buildSearchPage()
{
    auto *page = new QWidget;
    page->setObjectName("tsSearchEvent");
    auto *box = new QVBoxLayout(page);
    PageControlSearch = new QTabWidget(page);
    PageControlSearch->setObjectName("PageControlSearch");
    PageControlSearch->addTab(buildDataPage(), QString());
    static const int signalTexts[6] = {-1, -1, -1, -1, -1, -1};
    PageControlSearch->addTab(buildLevelPage(signalGroups_, 6, signalTexts, Txt::LogicalAnd, 0), QString());
    static const int errorTexts[3] = {Txt::Pe, Txt::Fe, Txt::Le};
    PageControlSearch->addTab(buildLevelPage(errorGroups_, 3, errorTexts, 0, 0), QString());
    PageControlSearch->addTab(buildTimePage(), QString());
    PageControlSearch->widget(SearchPage::Signal)->setObjectName("TabSignalSearch");
    PageControlSearch->widget(SearchPage::Error)->setObjectName("TabErrorSearch");
    box->addWidget(PageControlSearch);
    return page;
}

QWidget *TFormGoto::buildDataPage()
{
    auto *page = new QWidget;
    page->setObjectName("searchTabData");
    auto *box = new QVBoxLayout(page);
    auto *lines = new QHBoxLayout;
    ckSearchD1 = new QCheckBox(page);
    ckSearchD1->setObjectName("ckSearchD1");
    ckSearchD1->setChecked(true);
    ckSearchD2 = new QCheckBox(page);
    ckSearchD2->setObjectName("ckSearchD2");
    ckSearchD2->setChecked(true);
    texts_.append({ckSearchD1, Txt::D1});
    texts_.append({ckSearchD2, Txt::D2});
    lines->addWidget(ckSearchD1);
    lines->addWidget(ckSearchD2);
    lines->addStretch(1);
    box->addLayout(lines);
    patternFields = new PatternFields(page);
    patternFields->setObjectName("patternFields");
    box->addWidget(patternFields, 1);
    return page;
}

QWidget *TFormGoto::buildLevelPage(QButtonGroup **groups, int count, const int *lineTexts, int headText, int)
{
    auto *page = new QWidget;
    auto *box = new QVBoxLayout(page);
    QLabel *head = nullptr;
    if (headText != 0) {
        head = new QLabel(page);
        texts_.append({head, headText});
        box->addWidget(head);
    }
    auto *grid = new QGridLayout;
    for (int c = 0; c < 3; ++c) {
        auto *l = new QLabel(page);
        l->setAlignment(Qt::AlignCenter);
        texts_.append({l, Txt::Ignore + c});
        grid->addWidget(l, 0, c + 1);
    }
    static const char *suffix[3] = {"ignore", "slope", "rise"};       // signal buttons: ignore, low, high
    static const char *errorSuffix[3] = {"ignore", "no", "yes"};      // error buttons
    static const char *errorNames[3] = {"PE", "FE", "LE"};
    static const char *signalNames[6] = {"S1", "M1", "S2", "M2", "M5", "M3"};
    const bool signal = count == 6;
    for (int r = 0; r < count; ++r) {
        auto *name = new QLabel(page);
        if (lineTexts[r] < 0)
            name->setText(QString::fromLatin1(kSignalNames[r]));
        else
            texts_.append({name, lineTexts[r]});
        grid->addWidget(name, r + 1, 0);
        groups[r] = new QButtonGroup(page);
        for (int c = 0; c < 3; ++c) {
            auto *rb = new QRadioButton(page);
            rb->setObjectName(QString("rb%1%2").arg(signal ? signalNames[r] : errorNames[r],
                                                   signal ? suffix[c] : errorSuffix[c]));
            groups[r]->addButton(rb, c);
            grid->addWidget(rb, r + 1, c + 1, Qt::AlignCenter);
        }
        groups[r]->button(0)->setChecked(true);
    }
    grid->setColumnStretch(4, 1);
    box->addLayout(grid);
    box->addStretch(1);
    if (signal)
        lblSignalHead = head;
    return page;
}

QWidget *TFormGoto::buildTimePage()
{
    auto *page = new QWidget;
    page->setObjectName("TabDateTimeSearch");
    auto *box = new QVBoxLayout(page);
    lblSearchTime = new QLabel(page);
    lblSearchTime->setWordWrap(true);
    texts_.append({lblSearchTime, Txt::TimeValue});
    box->addWidget(lblSearchTime);
    auto *row = new QHBoxLayout;
    pkSearchDate = new QDateEdit(QDate::currentDate(), page);
    pkSearchDate->setObjectName("pkSearchDate");
    pkSearchDate->setCalendarPopup(true);
    pkSearchTime = new QTimeEdit(QTime::currentTime(), page);
    pkSearchTime->setObjectName("pkSearchTime");
    pkSearchTime->setDisplayFormat("HH:mm:ss.zzz");
    row->addWidget(pkSearchDate);
    row->addWidget(pkSearchTime);
    row->addStretch(1);
    box->addLayout(row);
    box->addStretch(1);
    return page;
}

QWidget *TFormGoto::buildDeltaPage()
{
    auto *page = new QWidget;
    page->setObjectName("tsSearchDelta");
    auto *box = new QVBoxLayout(page);
    deltaRange = new RangeControls(page);
    deltaRange->setObjectName("deltaRange");
    box->addWidget(deltaRange);
    auto *grid = new QGridLayout;
    auto label = [&](int text, int row, int col) {
        auto *l = new QLabel(page);
        texts_.append({l, text});
        grid->addWidget(l, row, col);
    };
    label(Txt::AbsoluteTime, 0, 0);
    edtMPStartTime = ReadOnlyField(page, "edtMPStartTime");
    edtMPStopTime = ReadOnlyField(page, "edtMPStopTime");
    grid->addWidget(edtMPStartTime, 0, 1);
    grid->addWidget(edtMPStopTime, 0, 2);
    label(Txt::DeltaTime, 1, 0);
    edtMPDeltaTime = ReadOnlyField(page, "edtMPDeltaTime");
    grid->addWidget(edtMPDeltaTime, 1, 1, 1, 2);
    const std::pair<QLineEdit **, std::pair<const char *, int>> rounded[] = {
        {&edtMPDeltaTimeSec, {"edtMPDeltaTimeSec", Txt::Seconds}},
        {&edtMPDeltaTimeMSec, {"edtMPDeltaTimeMSec", Txt::Millis}},
        {&edtMPDeltaTimeUSec, {"edtMPDeltaTimeUSec", Txt::Micros}}};
    int row = 2;
    for (const auto &[field, spec] : rounded) {
        label(Txt::Rounded, row, 0);
        *field = ReadOnlyField(page, spec.first);
        (*field)->setAlignment(Qt::AlignRight);
        grid->addWidget(*field, row, 1);
        label(spec.second, row, 2);
        ++row;
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 1);
    box->addLayout(grid);
    box->addStretch(1);
    connect(deltaRange, &RangeControls::rangeChanged, this, &TFormGoto::showDelta);
    return page;
}

QWidget *TFormGoto::buildNumberPage(const char *name, int label, const char *suffix, QLineEdit *&field,
                                    UpDown *&upDown, QPushButton *&reset, QSlider *&bar)
{
    auto *page = new QWidget;
    page->setObjectName(name);
    auto *grid = new QGridLayout(page);
    auto *l = new QLabel(page);
    texts_.append({l, label});
    field = new QLineEdit(page);
    field->setObjectName(QStringLiteral("edtGoto") + suffix);
    upDown = new UpDown(page);
    upDown->setObjectName(QStringLiteral("UpDown") + suffix);
    upDown->setAssociate(field);
    bar = new QSlider(Qt::Horizontal, page);
    bar->setObjectName(QStringLiteral("tbGoto") + suffix);
    reset = new QPushButton(page);
    reset->setObjectName(QStringLiteral("btnResetGoto") + suffix);
    texts_.append({reset, Txt::BackToStart});
    grid->addWidget(l, 0, 0);
    grid->addWidget(field, 0, 1);
    grid->addWidget(upDown, 0, 2);
    grid->addWidget(reset, 0, 3);
    grid->addWidget(bar, 1, 0, 1, 4);
    grid->setRowStretch(2, 1);
    grid->setColumnStretch(1, 1);
    return page;
}

QWidget *TFormGoto::buildTriggerPage()
{
    QWidget *page = buildNumberPage("tsGotoTR", Txt::GotoTrigger, "TR", edtGotoTR, UpDownTR, btnResetGotoTR, tbGotoTR);
    UpDownTR->setRange(1, kMaxTriggerPoint);
    tbGotoTR->setRange(1, kMaxTriggerPoint);
    edtGotoTR->setText("1");
    auto go = [this] {
        bool ok = false;
        const int n = edtGotoTR->text().trimmed().toInt(&ok);
        if (!ok || n < 1 || n > kMaxTriggerPoint) {
            edtGotoTR->setText(QString::number(tbGotoTR->value())); // a valid number back
            return;
        }
        tbGotoTR->blockSignals(true);
        tbGotoTR->setValue(n);
        tbGotoTR->blockSignals(false);
        gotoTrigger(n);
    };
    connect(edtGotoTR, &QLineEdit::editingFinished, this, go);
    connect(UpDownTR, &UpDown::stepped, this, go);
    connect(tbGotoTR, &QSlider::sliderReleased, this, [this] { edtGotoTR->setText(QString::number(tbGotoTR->value())); });
    connect(tbGotoTR, &QSlider::sliderReleased, this, go);
    connect(tbGotoTR, &QSlider::actionTriggered, this, [this, go](int action) {
        if (action != QAbstractSlider::SliderMove) { // clicks and keys, not the drag itself
            QMetaObject::invokeMethod(this, [this, go] {
                edtGotoTR->setText(QString::number(tbGotoTR->value()));
                go();
            }, Qt::QueuedConnection);
        }
    });
    connect(btnResetGotoTR, &QPushButton::clicked, this, [this] {
        edtGotoTR->setText("1");
        tbGotoTR->setValue(1);
        grid_.GotoMp(0);
    });
    return page;
}

QWidget *TFormGoto::buildMpPage()
{
    QWidget *page = buildNumberPage("tsGotoMP", Txt::GotoMp, "MP", edtGotoMP, UpDownMP, btnResetGotoMP, tbGotoMP);
    edtGotoMP->setText("0");
    auto fromField = [this] {
        const MpFieldValue v = ReadMpField(edtGotoMP->text().toStdString(), mpScale_,
                                           mpScale_.Clamp(static_cast<std::uint64_t>(std::max<std::int64_t>(
                                               0, grid_.position() + 1))));
        gotoMp(v.value);
    };
    connect(edtGotoMP, &QLineEdit::editingFinished, this, fromField);
    connect(UpDownMP, &UpDown::stepped, this, fromField);
    connect(tbGotoMP, &QSlider::valueChanged, this, [this](int value) {
        if (!mpScale_.empty())
            gotoMp(mpScale_.FromBar(value));
    });
    connect(btnResetGotoMP, &QPushButton::clicked, this, [this] { gotoMp(0); });
    return page;
}

void TFormGoto::InitialLoads()
{
    setWindowTitle(S(Txt::Caption));
    const int pages[] = {Txt::SearchEvent, Txt::Delta, Txt::TriggerPoint, Txt::Event};
    for (int i = 0; i < 4; ++i)
        pgGotoSearch->setTabText(i, S(pages[i]));
    const int searchPages[] = {Txt::Data, Txt::Signal, Txt::Error, Txt::Time};
    for (int i = 0; i < 4; ++i)
        PageControlSearch->setTabText(i, S(searchPages[i]));
    for (const auto &[widget, text] : texts_) {
        if (auto *l = qobject_cast<QLabel *>(widget))
            l->setText(S(text));
        else if (auto *b = qobject_cast<QAbstractButton *>(widget))
            b->setText(S(text));
    }
    patternFields->InitialLoads();
    deltaRange->InitialLoads();
    if (!edtMPDeltaTime->text().isEmpty())
        showDelta(); // the day word in the new language
}

void TFormGoto::showPage(int page)
{
    pgGotoSearch->setCurrentIndex(std::clamp(page, 0, pgGotoSearch->count() - 1));
    recordingChanged();
    show();
    raise();
    activateWindow();
}

int TFormGoto::pageIndex() const { return pgGotoSearch->currentIndex(); }
int TFormGoto::searchPageIndex() const { return PageControlSearch->currentIndex(); }

void TFormGoto::setPageIndexes(int page, int searchPage)
{
    pgGotoSearch->setCurrentIndex(std::clamp(page, 0, pgGotoSearch->count() - 1));
    PageControlSearch->setCurrentIndex(std::clamp(searchPage, 0, PageControlSearch->count() - 1));
}

std::uint64_t TFormGoto::lastMp() const
{
    const std::int64_t count = grid_.recordCount();
    return count > 0 ? static_cast<std::uint64_t>(count - 1) : 0;
}

void TFormGoto::recordingChanged()
{
    const bool any = grid_.recordCount() > 0;
    mpScale_ = any ? TrackScale(0, lastMp()) : TrackScale();
    tbGotoMP->blockSignals(true);
    tbGotoMP->setRange(0, mpScale_.barMaximum());
    tbGotoMP->blockSignals(false);
    UpDownMP->setRange(0, static_cast<std::int64_t>(lastMp()));
    for (QWidget *w : std::initializer_list<QWidget *>{edtGotoMP, tbGotoMP, UpDownMP, btnResetGotoMP})
        w->setEnabled(any);
    if (any)
        deltaRange->setLimits(0, lastMp());
    else
        deltaRange->setLimits(1, 0);
}

void TFormGoto::gotoMp(std::uint64_t mp)
{
    if (mpScale_.empty())
        return;
    mp = mpScale_.Clamp(mp);
    edtGotoMP->setText(QString::number(mp));
    tbGotoMP->blockSignals(true);
    tbGotoMP->setValue(mpScale_.ToBar(mp));
    tbGotoMP->blockSignals(false);
    grid_.ShowFound(static_cast<std::int64_t>(mp));
}

void TFormGoto::gotoTrigger(int number)
{
    RecordReader reader;
    if (const Result opened = reader.open(recordPath_()); !opened) {
        prompter_.ShowMessage(Str(SearchText::Title), Str(Txt::Unreadable) + "\n" + opened.detail, Buttons::Ok,
                              Icon::Warning);
        return;
    }
    SearchRequest r;
    r.criteria.kind = SearchKind::TriggerPoint;
    r.criteria.triggerNumber = number;
    r.direction = 1;
    r.position = -1; // from MP 0 on: the trigger points of the whole recording
    r.currentRow = 0;
    r.minimum = -1;
    r.maximum = static_cast<std::int64_t>(reader.recordCount());
    const SearchOutcome found = RunSearch(reader, r);
    if (found.status == SearchStatus::Found)
        grid_.ShowFound(found.mp);
    else
        tell(found.messageNo);
}

void TFormGoto::btnSearchForwardClick() { Search(1); }
void TFormGoto::btnSearchReverseClick() { Search(-1); }
void TFormGoto::btnSearchStopClick() { stop_ = true; }

bool TFormGoto::criteria(SearchCriteria &c)
{
    switch (PageControlSearch->currentIndex()) {
    case SearchPage::Data: {
        c.kind = SearchKind::Data;
        const std::string &bytes = patternFields->bytes();
        c.data.pattern.assign(bytes.begin(), bytes.end());
        c.data.d1 = ckSearchD1->isChecked();
        c.data.d2 = ckSearchD2->isChecked();
        return true;
    }
    case SearchPage::Signal:
        c.kind = SearchKind::Signal;
        for (int i = 0; i < 6; ++i)
            c.signal.level[i] = signalGroups_[i]->checkedId();
        return true;
    case SearchPage::Error:
        c.kind = SearchKind::Error;
        for (int i = 0; i < 3; ++i)
            c.error.flag[i] = errorGroups_[i]->checkedId();
        return true;
    case SearchPage::Time: {
        c.kind = SearchKind::DateTime;
        const QDate d = pkSearchDate->date();
        const QTime t = pkSearchTime->time();
        c.dateTime = static_cast<double>(QDate(1899, 12, 30).daysTo(d)) + t.msecsSinceStartOfDay() / 86400000.0;
        return true;
    }
    default:
        return false;
    }
}

void TFormGoto::Search(int direction)
{
    if (searching_)
        return;
    SearchCriteria c;
    if (!criteria(c))
        return;
    RecordReader reader;
    if (const Result opened = reader.open(recordPath_()); !opened) {
        prompter_.ShowMessage(Str(SearchText::Title), Str(Txt::Unreadable) + "\n" + opened.detail, Buttons::Ok,
                              Icon::Warning);
        return;
    }
    SearchRequest r;
    r.criteria = std::move(c);
    r.direction = direction;
    r.position = grid_.position();
    r.currentRow = grid_.currentRow();
    r.minimum = 0;
    r.maximum = reader.recordCount() > 0 ? static_cast<std::int64_t>(reader.recordCount() - 1) : 0;

    searching_ = true;
    stop_ = false;
    btnSearchForward->setEnabled(false);
    btnSearchReverse->setEnabled(false);
    btnSearchStop->setEnabled(true);
    SearchHooks hooks;
    hooks.stop = &stop_;
    hooks.pumpInterval = 1 << 14;
    // The window and the recording's display stay alive: the event loop runs every few
    // milliseconds, not at every pump (a pump every 64 Ki MPs would cost more than the scan).
    QElapsedTimer sincePump; // invalid until the first pump: that one comes at once
    hooks.progress = [this, &sincePump](int percent) {
        percent = std::clamp(percent, 0, 100);
        if (sincePump.isValid() && sincePump.elapsed() < kPumpEveryMs)
            return;
        if (ProgressBar1->value() != percent)
            ProgressBar1->setValue(percent);
        QCoreApplication::processEvents();
        sincePump.start();
    };
    const SearchOutcome found = RunSearch(reader, r, hooks);
    searching_ = false;
    btnSearchForward->setEnabled(true);
    btnSearchReverse->setEnabled(true);
    btnSearchStop->setEnabled(false);
    ProgressBar1->setValue(0);
    switch (found.status) {
    case SearchStatus::Found:
        grid_.ShowFound(found.mp);
        break;
    case SearchStatus::Stopped:
        break; // the grid stays where it was, without a word
    case SearchStatus::NotFound:
    case SearchStatus::NothingToSearch:
        tell(found.messageNo);
        break;
    }
}

void TFormGoto::tell(int text)
{
    if (text != 0)
        prompter_.ShowMessage(Str(SearchText::Title), Str(text), Buttons::Ok, Icon::Information);
}

void TFormGoto::showDelta()
{
    RecordReader reader;
    MpRecord start, stop;
    if (!reader.open(recordPath_()) || !reader.read(deltaRange->from(), start) || !reader.read(deltaRange->to(), stop)) {
        for (QLineEdit *e : {edtMPStartTime, edtMPStopTime, edtMPDeltaTime, edtMPDeltaTimeSec, edtMPDeltaTimeMSec,
                             edtMPDeltaTimeUSec})
            e->clear();
        return;
    }
    const DeltaMeasure m = MeasureDelta(start.time, stop.time, TimeLocale::System(), DayWord());
    edtMPStartTime->setText(QString::fromStdString(m.startText).trimmed());
    edtMPStopTime->setText(QString::fromStdString(m.stopText).trimmed());
    edtMPDeltaTime->setText(QString::fromStdString(m.deltaText).trimmed());
    edtMPDeltaTimeSec->setText(m.valid ? QString::number(m.seconds) : QString());
    edtMPDeltaTimeMSec->setText(m.valid ? QString::number(m.milliseconds) : QString());
    edtMPDeltaTimeUSec->setText(m.valid ? QString::number(m.microseconds) : QString());
}

void TFormGoto::closeEvent(QCloseEvent *event)
{
    stop_ = true; // a running search ends with the window
    QDialog::closeEvent(event);
}

} // namespace kestrel
