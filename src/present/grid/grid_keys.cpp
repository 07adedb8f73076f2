#include "present/grid/grid_keys.h"

#include <algorithm>

namespace kestrel::grid {

namespace {

__extension__ using Wide = __int128; // products of two 64-bit positions

bool IsStepView(int view) { return view == 1 || view == 3 || view == 4; }

// Up at the top row scrolls back one step; elsewhere the cursor moves.
void StepUp(const KeyContext &ctx, KeyOutcome &out)
{
    if (ctx.row <= 1)
        out.position = std::max<std::int64_t>(0, ctx.position - ctx.smallChange);
    else
        out.row = ctx.row - 1;
}

// Down at the last row scrolls on one step, never past the last full page.
void StepDown(const KeyContext &ctx, KeyOutcome &out)
{
    const int lastRow = ctx.rowCount - 1;
    if (ctx.row >= lastRow) {
        const std::int64_t end = EndPosition(ctx.maximum, ctx.largeChange);
        if (ctx.position < end)
            out.position = std::min(end, ctx.position + ctx.smallChange);
    } else {
        out.row = ctx.row + 1;
    }
}

} // namespace

std::int64_t EndPosition(std::int64_t maximum, std::int64_t largeChange)
{
    return std::max<std::int64_t>(0, maximum - largeChange - 1);
}

KeyOutcome ApplyGridKey(GridKey key, const KeyContext &ctx)
{
    KeyOutcome out;
    out.position = ctx.position;
    out.col = ctx.col;
    out.row = ctx.row;
    if (!ctx.fileOpen)
        return out;
    if (ctx.followEnd && key != GridKey::End) {
        out.consumed = true;
        return out;
    }
    const int lastRow = std::max(1, ctx.rowCount - 1);
    const int lastCol = std::max(0, ctx.colCount - 1);
    out.consumed = true;
    switch (key) {
    case GridKey::PageUp:
        if (ctx.row <= 1)
            out.position = std::max<std::int64_t>(0, ctx.position - ctx.largeChange);
        else
            out.row = 1;
        break;
    case GridKey::PageDown:
        if (ctx.row >= lastRow) {
            if (ctx.maximum - ctx.largeChange - 1 > ctx.position)
                out.position = std::min(EndPosition(ctx.maximum, ctx.largeChange), ctx.position + ctx.largeChange);
        } else {
            out.row = lastRow;
        }
        break;
    case GridKey::Home:
        out.position = 0;
        break;
    case GridKey::End:
        if (ctx.maximum >= ctx.largeChange - 1)
            out.position = EndPosition(ctx.maximum, ctx.largeChange);
        break;
    case GridKey::Up:
        StepUp(ctx, out);
        break;
    case GridKey::Down:
        StepDown(ctx, out);
        break;
    case GridKey::Left:
        out.invalidate = true;
        if (ctx.col > 0) {
            out.col = ctx.col - 1;
        } else if (ctx.row > 1) {
            out.row = ctx.row - 1;
            out.col = lastCol;
        } else if (ctx.position > 0) {
            StepUp(ctx, out);
            out.col = lastCol;
        }
        break;
    case GridKey::Right:
        out.invalidate = true;
        if (!IsStepView(ctx.view)) {
            out.consumed = false;
            break;
        }
        if (ctx.col < lastCol) {
            out.col = ctx.col + 1;
        } else if (lastRow > ctx.row) {
            out.row = ctx.row + 1;
            out.col = 0;
        } else if (ctx.position < ctx.maximum) {
            StepDown(ctx, out);
            out.col = 0;
        }
        break;
    }
    out.row = std::clamp(out.row, 1, lastRow);
    out.col = std::clamp(out.col, 0, lastCol);
    return out;
}

KeyOutcome ApplyWheel(bool down, const KeyContext &ctx)
{
    if (ctx.followEnd) {
        KeyOutcome out;
        out.position = ctx.position;
        out.col = ctx.col;
        out.row = ctx.row;
        return out;
    }
    return ApplyGridKey(down ? GridKey::Down : GridKey::Up, ctx);
}

int ScrollMapping::barMaximum() const
{
    return static_cast<int>(std::min(maxPosition, kScrollBarLimit));
}

int ScrollMapping::ToBar(std::int64_t position) const
{
    position = std::clamp<std::int64_t>(position, 0, maxPosition);
    if (!scaled())
        return static_cast<int>(position);
    const auto v = static_cast<Wide>(position) * kScrollBarLimit / maxPosition;
    return static_cast<int>(v);
}

std::int64_t ScrollMapping::FromBar(int value) const
{
    const std::int64_t v = std::clamp<std::int64_t>(value, 0, barMaximum());
    if (!scaled())
        return v;
    if (v >= kScrollBarLimit)
        return maxPosition;
    // Round up so that FromBar(ToBar(p)) stays within one bar step of p.
    const auto p = (static_cast<Wide>(v) * maxPosition + kScrollBarLimit - 1) / kScrollBarLimit;
    return static_cast<std::int64_t>(p);
}

} // namespace kestrel::grid
