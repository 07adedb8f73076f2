#include "record/record_store.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kestrel {
namespace {

// Larger batches gain nothing once a write costs less than the records in it.
constexpr std::size_t kBatchRecords = 4096;

int idx(Channel c) { return static_cast<int>(c); }

} // namespace

RecordStore::RecordStore(Clock &clock) : clock_(clock), frequency_(clock.frequency())
{
    // 9600 baud, 8N1 until the ports say otherwise: ten bits a character.
    timing_.cps = 960.0;
    timing_.tchar = 10 * frequency_ / 9600 + 1;
    batchBytes_.reserve(kBatchRecords * kMpSize);
    batchRecords_.reserve(kBatchRecords);
}

void RecordStore::ResetComEvent() { pending_ = ComEvent{}; }

void RecordStore::ResetCounters()
{
    std::fill(std::begin(counts_), std::end(counts_), 0);
    previous_.loadActual = previous_.loadPeak = previous_.quality = 0;
    t0_ = clock_.nowDateTime();
    recordingStart_ = t0_;
    cbase_ = 0; // the next MP takes the counter base and T0 afresh
    ResetLastChange();
}

void RecordStore::ResetLastChange()
{
    const double now = clock_.nowDateTime();
    lastChange_ = LastChangeTable{};
    const std::uint8_t levels[6] = {pending_.s1, pending_.m1, pending_.s2, pending_.m2, pending_.m5, pending_.m3};
    for (int i = 0; i < 6; ++i)
        lastChange_[idx(Channel::S1) + i].value = levels[i];
    for (auto &c : lastChange_)
        c.time = now;
}

void RecordStore::RestoreFromFirstMp(const MpRecord *first)
{
    if (!first)
        return;
    std::copy(std::begin(first->counts), std::end(first->counts), counts_);
    previous_.loadActual = first->loadActual;
    previous_.loadPeak = first->loadPeak;
    previous_.quality = first->quality;
    t0_ = first->time;
    cbase_ = clast_ = clock_.counter();
    // The counters taken over hold the whole file, so the load is averaged from the file's
    // first MP, not from whatever recording this session happened to start before.
    if (std::isfinite(first->time))
        recordingStart_ = first->time;
}

void RecordStore::RestoreFromLastMp(const MpRecord *last)
{
    if (last) {
        previous_ = *last;
        std::copy(std::begin(last->counts), std::end(last->counts), counts_);
    }
    // Times go on from now, but never before the last MP: bursts spread one
    // character time apart may have run ahead of the wall clock.
    t0_ = clock_.nowDateTime();
    if (last && last->time > t0_)
        t0_ = last->time;
    cbase_ = clast_ = clock_.counter();
}

void RecordStore::RebaseCounter()
{
    t0_ = previous_.time;
    cbase_ = clast_ = clock_.counter();
}

void RecordStore::updateLastChange(const MpRecord &mp)
{
    const double t = mp.time;
    const std::uint8_t levels[6] = {mp.s1, mp.m1, mp.s2, mp.m2, mp.m5, mp.m3};
    for (int i = 0; i < 6; ++i) {
        auto &c = lastChange_[idx(Channel::S1) + i];
        if (levels[i] != 0 || levels[i] != c.value) {
            c.value = levels[i];
            c.time = t;
        }
    }
    auto dataChannel = [&](Channel ch, std::uint8_t byte, std::uint8_t valid, Counter counter) {
        if (!valid)
            return;
        ++counts_[static_cast<int>(counter)];
        auto &c = lastChange_[idx(ch)];
        if (c.value != byte || c.valid != valid) {
            c.value = byte;
            c.valid = valid;
            c.time = t;
        }
    };
    dataChannel(Channel::D1, mp.d1, mp.d1Valid, Counter::D1);
    dataChannel(Channel::D2, mp.d2, mp.d2Valid, Counter::D2);

    auto errorKind = [&](Channel onD1, Channel onD2, std::uint8_t flagD1, std::uint8_t flagD2, Counter counter) {
        if (!flagD1 && !flagD2)
            return;
        ++counts_[static_cast<int>(counter)];
        lastChange_[idx(onD1)] = {flagD1, 0, t};
        lastChange_[idx(onD2)] = {flagD2, 0, t};
    };
    errorKind(Channel::PeD1, Channel::PeD2, mp.peD1, mp.peD2, Counter::PE);
    errorKind(Channel::FeD1, Channel::FeD2, mp.feD1, mp.feD2, Counter::FE);
    errorKind(Channel::LeD1, Channel::LeD2, mp.leD1, mp.leD2, Counter::LE);
}

std::uint8_t RecordStore::loadActual(const MpRecord &mp) const
{
    const std::uint64_t larger = std::max(counts_[0], counts_[1]);
    const double elapsed = std::trunc((mp.time - recordingStart_) * 86400.0);
    if (elapsed < 1.0)
        return larger > 0 ? 100 : 0;
    if (timing_.cps <= 0.0)
        return 0;
    // Stored in the byte as it comes, without clamping (a load above 255 % wraps).
    const double load = std::trunc(static_cast<double>(larger) * 100.0 / (elapsed * timing_.cps));
    return static_cast<std::uint8_t>(static_cast<std::uint64_t>(std::fmod(load, 256.0)));
}

std::uint8_t RecordStore::quality() const
{
    const std::uint64_t errors = counts_[2] + counts_[3] + counts_[4];
    const std::uint64_t data = counts_[0] + counts_[1];
    if (errors >= data)
        return 0;
    // Whole numbers: (1 - 9/10) * 100 in floating point is 9.999..., which truncates to 9.
    if (data < (UINT64_MAX / 100))
        return static_cast<std::uint8_t>((data - errors) * 100 / data);
    return static_cast<std::uint8_t>((data - errors) / (data / 100));
}

int RecordStore::WriteMp(const ComEvent &e, std::uint16_t burst, bool reset)
{
    if (batchRecords_.empty()) {
        beforeBatch_ = previous_;
        std::copy(std::begin(counts_), std::end(counts_), beforeCounts_);
    }

    MpRecord mp;
    // 1. Number.
    if (reset) {
        mp.number = 0;
        previous_.number = 0;
        previous_.loadActual = previous_.loadPeak = previous_.quality = 0;
    } else {
        mp.number = previous_.number + 1;
    }

    // 2. Time stamp: spread the bytes of one burst one character time apart and
    // keep every MP at least one character time after the one before — but never
    // further ahead of the moment the burst was read than the burst's own length
    // at the line rate. Bytes that come faster than the settings allow (a line
    // faster than the port is set to, a simulated line) then share a stamp
    // instead of piling up time that has not passed.
    const std::int64_t now = clock_.counter();
    std::int64_t c = now;
    if (cbase_ == 0) {
        cbase_ = c;
        clast_ = c;
        t0_ = clock_.nowDateTime();
        mp.time = t0_;
    } else {
        if (burst >= 2 || c - clast_ < timing_.tchar)
            c = clast_ + timing_.tchar;
        const std::int64_t latest = now + (static_cast<std::int64_t>(burst) + 1) * timing_.tchar;
        if (c > latest)
            c = std::max(clast_, latest); // never back in time either
        mp.time = t0_ + (static_cast<double>(c - cbase_) / static_cast<double>(frequency_)) / 86400.0;
        clast_ = c;
    }

    // 3. Data, levels, errors.
    mp.d1 = e.d1;
    mp.d2 = e.d2;
    mp.d1Valid = e.d1Valid;
    mp.d2Valid = e.d2Valid;
    mp.s1 = e.s1;
    mp.m1 = e.m1;
    mp.s2 = e.s2;
    mp.m2 = e.m2;
    mp.m5 = e.m5;
    mp.m3 = e.m3;
    mp.peD1 = e.peD1;
    mp.feD1 = e.feD1;
    mp.leD1 = e.leD1;
    mp.peD2 = e.peD2;
    mp.feD2 = e.feD2;
    mp.leD2 = e.leD2;

    // 4.-5. Last-change table and counters.
    updateLastChange(mp);
    if (events_ != nullptr && e.markCode == 0 && e.markKind != kSystemMarkKind) // marks are not line events
        events_->Note(mp);
    std::copy(std::begin(counts_), std::end(counts_), mp.counts);

    // 6.-8. Load and quality.
    mp.loadActual = loadActual(mp);
    mp.loadPeak = std::max(previous_.loadPeak, mp.loadActual);
    mp.quality = quality();

    // 9. Marks.
    mp.markCode = e.markCode;
    mp.markKind = e.markKind;
    mp.markExtra = e.markExtra;

    // 10.-11. Into the file (the live buffer follows what reached the file).
    const std::size_t at = batchBytes_.size();
    batchBytes_.resize(at + kMpSize);
    EncodeMp(mp, batchBytes_.data() + at);
    batchRecords_.push_back(mp);
    previous_ = mp;

    if (!batching_ || batchRecords_.size() >= kBatchRecords)
        return flush();
    return WriteResult::Ok;
}

int RecordStore::flush()
{
    const std::size_t count = batchRecords_.size();
    if (count == 0)
        return WriteResult::Ok;
    const std::size_t bytes = sink_ ? sink_->appendRecords(batchBytes_.data(), batchBytes_.size()) : 0;
    const std::size_t whole = std::min(bytes / kMpSize, count);
    for (std::size_t i = 0; i < whole; ++i)
        live_.push(batchRecords_[i]);
    written_.fetch_add(static_cast<std::uint32_t>(whole), std::memory_order_release);
    if (whole < count)
        rollbackTo(whole);
    batchBytes_.clear();
    batchRecords_.clear();
    return whole == count ? WriteResult::Ok : WriteResult::WriteFailed;
}

void RecordStore::rollbackTo(std::size_t recordsWritten)
{
    // Counters after a record equal the counters in it.
    if (recordsWritten > 0) {
        previous_ = batchRecords_[recordsWritten - 1];
        std::copy(std::begin(previous_.counts), std::end(previous_.counts), counts_);
    } else {
        previous_ = beforeBatch_;
        std::copy(std::begin(beforeCounts_), std::end(beforeCounts_), counts_);
    }
    lost_ += batchRecords_.size() - recordsWritten;
}

int RecordStore::endBurst()
{
    batching_ = false;
    return flush();
}

int RecordStore::RecordComEvent(std::uint16_t burst)
{
    const int r = WriteMp(pending_, burst, false);
    if (r == WriteResult::Ok)
        dataWritten_ = true;
    return r;
}

int RecordStore::WriteTriggerMark(std::uint8_t t, std::uint8_t a, std::uint8_t b)
{
    pending_.markCode = static_cast<std::uint8_t>(t + 1);
    pending_.markKind = a;
    pending_.markExtra = b;
    const int r = WriteMp(pending_, 0, false);
    pending_.markCode = pending_.markKind = pending_.markExtra = 0;
    return r;
}

int RecordStore::WriteSystemMark(std::uint8_t code, bool reset)
{
    // An appended part opens like a new file as far as load goes: its peak is its own,
    // not the one an earlier recording reached.
    if (code == SystemMark::Appended)
        previous_.loadActual = previous_.loadPeak = previous_.quality = 0;
    ComEvent mark;
    mark.markCode = code;
    mark.markKind = kSystemMarkKind;
    return WriteMp(mark, 0, reset);
}

} // namespace kestrel
