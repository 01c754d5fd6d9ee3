#pragma once

/// What the extended chart search tries once the standard search has found
/// nothing: smaller pitches on a smoothly reduced copy, every in-plane angle,
/// and several candidate placements. Pitches are in pixels of the working copy.
struct ExtendedChartSearchParameters {
    bool enabled = true;
    /// Width of the working copy (area-averaged, so a small chart keeps its
    /// patches instead of the pixels a nearest-neighbour reduction happens to pick).
    int workingWidth = 640;
    /// Width of the pyramid's second level, used where the image is wider than
    /// the working copy: there it searches the pitches from `smallestPitch` up
    /// to those the working copy reaches. A full-HD frame is searched at full
    /// size: halved, a chart of 8-10 pixels pitch there falls below `smallestPitch`.
    int largerWorkingWidth = 1920;
    /// Smallest patch pitch searched; below about 8 pixels the gaps between
    /// patches fall under a pixel and the grid check cannot see them.
    int smallestPitch = 8;
    /// Pitches below this are searched on the lightly blurred copy, the others
    /// on the strongly blurred one.
    int finePitchLimit = 20;
    /// Box blur radii of the two copies, as a share of the band's smallest pitch.
    double blurPerPitch = 0.15;
    /// Ratio between neighbouring pitches of the ladder (the standard search uses 0.75).
    double pitchRatio = 0.8;
    /// Angle steps over the whole turn (24: 15 degrees, as the standard search).
    int angleSteps = 24;
    /// Placements tried in order of their score, each at least two pitches from the others.
    int candidates = 6;
    /// Search score a placement needs to be tried at all (1 = perfect match).
    float minSearchScore = 0.45f;
    /// Placements scoring up to this below the bar are scored again without
    /// up to `searchSamplesLeftOut` of the search model's nine samples, those
    /// matching worst (0: never), so that patches covered by a finger or a
    /// cable do not hide the chart.
    float leaveOutSlack = 0.3f;
    int searchSamplesLeftOut = 2;
    /// Patches the placement's finer search may leave out of its score, those
    /// matching the chart worst: covered patches would otherwise pull a chart
    /// in plain view below `minPlacementScore`.
    int coveredPatches = 3;
    /// Score of the placement's finer search over all 24 patches a candidate
    /// needs before its grid is settled and checked.
    float minPlacementScore = 0.5f;
    /// How much better the grid's hues must agree with the chart than those
    /// of the same grid moved by one column or row (-1..1 scale); refuses
    /// grids that sit one patch beside the chart.
    double minShiftMargin = 0.15;
    /// How much more the cells' colours must spread when the grid moves by
    /// half a cell; replaces the check that cell borders lie on the chart's
    /// background, which prints and other makers' frames do not pass.
    double minHalfShiftContrast = 4.0;
    /// Colour spread inside the cells over the step between cells (upper
    /// quartile), stricter than the standard check's 0.45 because the border
    /// test is dropped: a grid inside the patches shows little more than noise.
    double maxCellSpread = 0.25;
};
