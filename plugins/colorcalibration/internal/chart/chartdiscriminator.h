#pragma once

#include "ctrapezoid.h"

#include <QColor>
#include <QVector>

#include <cstdint>
#include <vector>

namespace Kalto {
class CKaltoImage;
}

/// The 6x4 patch grid over the chart: derives the 24 patch quadrilaterals
/// (row-major, chart order) from the grid corners and samples one robust colour
/// per patch from an RGB camera image. Not thread-safe.
class ChartDiscriminator {
public:
    /// One sample in the image's native units (0 .. 2^bitDepth - 1); ordered by
    /// its brightest channel.
    struct rgb16 {
        double red = 0.0;
        double green = 0.0;
        double blue = 0.0;
        bool operator<(const rgb16& o) const;
    };

    /// `patchSizePercent`: share of its grid cell's width and height a patch covers.
    explicit ChartDiscriminator(int patchSizePercent);
    virtual ~ChartDiscriminator();

    void setGridPosition(const CTrapezoid& grid);
    CTrapezoid getGridPosition() const;

    bool updateChartPositions();
    /// Appends the 24 patch quadrilaterals to `out`.
    void getChartPositions(QVector<CTrapezoid>& out);

    /// Samples every patch; patches with fewer than 24 pixels are skipped, so
    /// the stored colours may number fewer than 24.
    bool updateColorPatchValues(Kalto::CKaltoImage* image);
    /// Appends the stored colours unless they are marked invalid.
    void getColorPatchValues(QVector<QColor>& out);
    /// `fullScale` divides the native channel values (256 for 8-bit data).
    bool getColorPatchValue(const CTrapezoid& patch, const Kalto::CKaltoImage* image, int fullScale,
                            QColor& result);

    bool update80PercentGrayPatchValue(Kalto::CKaltoImage* image);
    /// Brightest channel of the 80 % grey patch, 0..255; 0 without a measurement.
    int get80PercentGrayPatchBrightness();
    /// That brightness in percent of 150 DN; 0.0 without a measurement.
    double get80PercentGrayPatch150DnHitRate();

    static constexpr int kGray80PercentIndex = 19;

private:
    QVector<CTrapezoid> m_chartPositions;
    bool m_positionsStale = true;
    QVector<QColor> m_colorPatchValues;
    bool m_colorsInvalid = true;
    bool m_grayInvalid = true;
    CTrapezoid m_gridPosition;
    int m_patchSizePercent;
    // Reused between calls so that sampling a frame does not allocate.
    std::vector<rgb16> m_samples;
    std::vector<uint64_t> m_keys;
};
