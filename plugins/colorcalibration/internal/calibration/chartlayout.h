#pragma once

/// The 24-patch chart's layout. Patches are numbered row-major, top row first
/// (index = row * kColumns + column): 18 chromatic patches, then white, then
/// five greys from light to dark.
namespace ChartLayout {
constexpr int kColumns = 6;
constexpr int kRows = 4;
constexpr int kPatches = kColumns * kRows;
/// Patches 0 .. kChromatic-1 carry hue; the fits weigh only these.
constexpr int kChromatic = 18;
}  // namespace ChartLayout
