#include "report/report_printer.h"

#include <QDateTime>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <fstream>
#include <optional>
#include <system_error>

#include "base/string_table.h"
#include "config/environment.h"
#include "record/record_reader.h"
#include "report/body_painter.h"
#include "report/report_layout.h"
#include "report/report_lines.h"
#include "report/report_log.h"
#include "report/report_texts.h"

namespace kestrel::report {

namespace {

constexpr double kLabelWidth = 190;

QString Q(const std::string &s) { return QString::fromStdString(s); }

QFont TextFont(int pixels, bool bold = false)
{
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPixelSize(pixels);
    f.setBold(bold);
    return f;
}

void PaintLine(QPainter &p, const TextLine &line, double y, double width)
{
    switch (line.kind) {
    case LineKind::Title: {
        p.setFont(TextFont(20, true));
        const QFontMetricsF fm(p.font());
        p.drawText(QRectF(0, y, width, LineHeight(line.kind)), Qt::AlignLeft | Qt::AlignVCenter,
                   fm.elidedText(Q(line.label), Qt::ElideRight, width));
        break;
    }
    case LineKind::Heading: {
        p.setFont(TextFont(14, true));
        const QRectF r(0, y + kSectionGap, width, LineHeight(line.kind) - kSectionGap - 3);
        p.drawText(r, Qt::AlignLeft | Qt::AlignVCenter, Q(line.label));
        p.fillRect(QRectF(0, r.bottom(), width, 0.8), QColor(0x70, 0x78, 0x84));
        break;
    }
    case LineKind::Field:
    case LineKind::Plain: {
        const double h = LineHeight(line.kind);
        double x = 0;
        if (line.kind == LineKind::Field) {
            p.setFont(TextFont(11, true));
            p.setPen(QColor(0x40, 0x40, 0x40));
            p.drawText(QRectF(0, y, kLabelWidth - 6, h), Qt::AlignLeft | Qt::AlignVCenter,
                       QFontMetricsF(p.font()).elidedText(Q(line.label), Qt::ElideRight, kLabelWidth - 6));
            x = kLabelWidth;
        }
        p.setFont(TextFont(11));
        p.setPen(Qt::black);
        const QString text = Q(line.kind == LineKind::Field ? line.value : line.label);
        p.drawText(QRectF(x, y, width - x, h), Qt::AlignLeft | Qt::AlignVCenter,
                   QFontMetricsF(p.font()).elidedText(text, Qt::ElideMiddle, width - x));
        break;
    }
    }
}

void PaintFooter(QPainter &p, const ReportRequest &rq, const PageBox &box, int page, int pages, const QString &date)
{
    const double top = box.height + 6;
    p.fillRect(QRectF(0, top, box.width, 0.8), QColor(0x70, 0x78, 0x84));
    p.setFont(TextFont(9));
    p.setPen(QColor(0x30, 0x30, 0x30));
    const QRectF r(0, top + 3, box.width, kFooterHeight - 9);
    const QString pageText = Q(StrIn(txt::kPageOf, rq.lang))
                                 .replace(QLatin1String("%1"), QString::number(page + 1))
                                 .replace(QLatin1String("%2"), QString::number(pages));
    const QString printed = Q(StrIn(txt::kPrinted, rq.lang)).replace(QLatin1String("%1"), date);
    const QFontMetricsF fm(p.font());
    const double side = box.width / 3;
    p.drawText(r, Qt::AlignLeft | Qt::AlignVCenter,
               fm.elidedText(Q(rq.recording.filename().string()), Qt::ElideMiddle, side - 8));
    p.drawText(r, Qt::AlignHCenter | Qt::AlignVCenter, printed);
    p.drawText(r, Qt::AlignRight | Qt::AlignVCenter, pageText);
}

Result Fail(int code, const std::string &detail) { return Result::Fail(code, detail); }

} // namespace

Expected<ReportOutcome> PrintReport(QPagedPaintDevice &device, const ReportRequest &rq,
                                    const ReportProgressFn &progress, int maxPages)
{
    Expected<ReportOutcome> out;
    RecordReader reader;
    if (const Result opened = reader.open(rq.recording.string()); !opened) {
        out.result = Fail(txt::kCannotRead, opened.detail.empty() ? rq.recording.string() : opened.detail);
        return out;
    }
    const std::uint64_t count = reader.recordCount();
    if (count == 0) {
        out.result = Fail(txt::kNoMps, rq.recording.string());
        return out;
    }
    if (rq.first > rq.last || rq.last >= count) {
        out.result = Fail(txt::kRangeOutside, "MP " + std::to_string(rq.first) + ":" + std::to_string(rq.last) +
                                                  " (0:" + std::to_string(count - 1) + ")");
        return out;
    }

    const PageBox box = ContentBox(rq.paper, rq.landscape, rq.withFooter);
    device.setPageLayout(QPageLayout(QPageSize(rq.paper == PaperSize::Letter ? QPageSize::Letter : QPageSize::A4),
                                     rq.landscape ? QPageLayout::Landscape : QPageLayout::Portrait,
                                     QMarginsF(kMarginMm, kMarginMm, kMarginMm, kMarginMm),
                                     QPageLayout::Millimeter));

    const std::uint64_t mps = rq.last - rq.first + 1;
    const bool needFacts = rq.withDetails || rq.withSummary;
    ReportProgress step{0, (needFacts ? mps : 0) + (rq.withBody ? mps : 0)};
    bool stopped = false;
    RangeFacts facts;
    if (needFacts) {
        facts = GatherRangeFacts(reader, rq.first, rq.last, [&](std::uint64_t done) {
            step.done = done;
            stopped = progress && !progress(step);
            return !stopped;
        });
        if (stopped) {
            out.value.stopped = true;
            return out;
        }
        if (facts.read < mps) {
            out.result = Fail(txt::kCannotRead, rq.recording.string());
            return out;
        }
    }

    RecordingFacts recording;
    recording.fileSize = reader.fileSize();
    recording.mpCount = count;
    if (!reader.read(0, recording.first) || !reader.read(count - 1, recording.last)) {
        out.result = Fail(txt::kCannotRead, rq.recording.string());
        return out;
    }

    std::vector<TextLine> before, after;
    if (rq.withHeader)
        before = HeaderLines(rq);
    if (rq.withDetails) {
        const auto details = DetailLines(rq, recording, facts);
        before.insert(before.end(), details.begin(), details.end());
    }
    std::optional<BodyPainter> body;
    BodyUnits units;
    units.count = 0;
    if (rq.withBody) {
        body.emplace(reader, rq, box.width);
        units = body->units();
        if (!before.empty())
            before.push_back({LineKind::Heading, StrIn(txt::kBody, rq.lang), {}});
    }
    if (rq.withSummary)
        after = SummaryLines(rq, facts);

    ReportLayout layout;
    if (!layout.Plan(box.height, before, units, after)) {
        out.result = Fail(txt::kPageTooSmall, {});
        return out;
    }
    QPainter p;
    if (!p.begin(&device)) {
        out.result = Fail(txt::kCannotWrite, {});
        return out;
    }
    // One unit is a grid pixel at 96 dpi, whatever the device's resolution.
    const double scale = device.logicalDpiX() / kUnitsPerInch;
    const QString date = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    const int pages = layout.pageCount();
    std::size_t nextBefore = 0, nextAfter = 0;
    const std::uint64_t doneBeforeBody = step.done;
    for (int page = 0; page < pages; ++page) {
        if (page > 0 && !device.newPage()) {
            p.end();
            out.result = Fail(txt::kCannotWrite, {});
            return out;
        }
        p.save();
        p.scale(scale, scale);
        p.setPen(Qt::black);
        for (; nextBefore < before.size() && layout.beforePlaces()[nextBefore].page == page; ++nextBefore)
            PaintLine(p, before[nextBefore], layout.beforePlaces()[nextBefore].y, box.width);
        const auto slice = layout.BodyOnPage(page);
        if (body && !slice.empty()) {
            if (!body->Paint(p, slice.y, slice.first, slice.end)) {
                p.restore();
                p.end();
                out.result = Fail(txt::kCannotRead, rq.recording.string());
                return out;
            }
            step.done = doneBeforeBody + body->MpsUpTo(slice.end);
        }
        for (; nextAfter < after.size() && layout.afterPlaces()[nextAfter].page == page; ++nextAfter)
            PaintLine(p, after[nextAfter], layout.afterPlaces()[nextAfter].y, box.width);
        if (rq.withFooter)
            PaintFooter(p, rq, box, page, pages, date);
        p.restore();
        out.value.pages = page + 1;
        if (progress && !progress(step)) {
            out.value.stopped = page + 1 < pages;
            if (out.value.stopped)
                break;
        }
        if (maxPages > 0 && page + 1 >= maxPages && page + 1 < pages) {
            out.value.truncated = true;
            qCInfo(lcReport) << "preview stops after" << maxPages << "of" << pages << "pages";
            break;
        }
    }
    p.end();
    return out;
}

ReportTarget ExamineReportTarget(const std::filesystem::path &out, const std::filesystem::path &recording)
{
    std::error_code ec;
    const auto status = std::filesystem::status(out, ec);
    if (!std::filesystem::exists(status))
        return ReportTarget::Absent;
    if (std::filesystem::equivalent(out, recording, ec))
        return ReportTarget::TheRecording;
    if (!std::filesystem::is_regular_file(status))
        return ReportTarget::NotAFile;
    char head[4] = {};
    std::ifstream in(out, std::ios::binary);
    in.read(head, sizeof head);
    if (in.gcount() == 0)
        return ReportTarget::Empty;
    return std::string_view(head, static_cast<std::size_t>(in.gcount())) == "%PDF" ? ReportTarget::Pdf
                                                                                   : ReportTarget::OtherFile;
}

Expected<ReportOutcome> WriteReportPdf(const std::filesystem::path &outPath, const ReportRequest &rq,
                                       const ReportProgressFn &progress)
{
    Expected<ReportOutcome> out;
    switch (ExamineReportTarget(outPath, rq.recording)) {
    case ReportTarget::TheRecording:
        out.result = Fail(txt::kOntoRecording, outPath.string());
        return out;
    case ReportTarget::NotAFile:
        out.result = Fail(txt::kCannotWrite, outPath.string() + ": not a regular file");
        return out;
    case ReportTarget::OtherFile:
        if (!rq.replaceNonPdf) {
            out.result = Fail(txt::kNotPdf, outPath.string());
            return out;
        }
        break;
    case ReportTarget::Absent:
    case ReportTarget::Empty:
    case ReportTarget::Pdf:
        break;
    }
    // Written beside the target and renamed over it at the end: a stopped or
    // failed report leaves the old file as it was.
    QSaveFile file(QString::fromStdString(outPath.string()));
    if (!file.open(QIODevice::WriteOnly)) {
        out.result = Fail(txt::kCannotWrite, outPath.string() + ": " + file.errorString().toStdString());
        return out;
    }
    {
        QPdfWriter writer(&file);
        writer.setCreator(QStringLiteral("Kestrel"));
        writer.setTitle(QString::fromStdString(rq.header.title.empty() ? rq.recording.filename().string()
                                                                        : rq.header.title));
        out = PrintReport(writer, rq, progress);
    }
    if (!out.ok() || out.value.stopped) {
        file.cancelWriting();
        return out;
    }
    if (!file.commit()) {
        out.result = Fail(txt::kCannotWrite, outPath.string() + ": " + file.errorString().toStdString());
        return out;
    }
    return out;
}

ReportHeader HeaderOfEnvironment(const Environment &env)
{
    ReportHeader h;
    h.title = env.general.Title;
    h.author = env.general.Author;
    h.company = env.general.Company;
    h.customer = env.customer.Company;
    if (!env.customer.Contact.empty())
        h.customer += (h.customer.empty() ? "" : ", ") + env.customer.Contact;
    h.description = env.description;
    for (const auto &[name, port] : {std::pair{"A", &env.comA}, std::pair{"B", &env.comB}}) {
        ReportPortSettings s;
        s.name = name;
        s.device = port->DevicePath.empty() ? "COM " + std::to_string(port->Device) : port->DevicePath;
        s.baud = port->CustomBaudRate;
        s.dataBits = port->DataBits;
        s.parity = port->Parity;
        s.stopBits = port->StopBits;
        h.ports.push_back(s);
    }
    return h;
}

Expected<ReportHeader> ReadReportHeader(const std::filesystem::path &environmentFile)
{
    Expected<ReportHeader> out;
    EnvLoadContext ctx;
    const EnvLoadResult loaded = LoadEnvironment(environmentFile, ctx);
    if (!loaded.existed) {
        out.result = Fail(txt::kEnvironmentNotRead, environmentFile.string());
        return out;
    }
    if (!loaded.status.ok()) {
        out.result = Fail(txt::kEnvironmentNotRead, environmentFile.string() + ": " + loaded.status.detail);
        return out;
    }
    out.value = HeaderOfEnvironment(loaded.env);
    return out;
}

} // namespace kestrel::report
