#include "chartcolors.h"

#include "colorspace.h"

dlib::matrix<double, ChartLayout::kPatches, 3> chartFromColors(const QVector<QColor>& colors, bool linearise)
{
    const ColorSpace cs;
    dlib::matrix<double, ChartLayout::kPatches, 3> chart = dlib::zeros_matrix<double>(ChartLayout::kPatches, 3);
    for (int k = 0; k < ChartLayout::kPatches && k < colors.size(); ++k) {
        dlib::matrix<double, 1, 3> row;
        row = colors[k].redF() * 255.0, colors[k].greenF() * 255.0, colors[k].blueF() * 255.0;
        dlib::set_rowm(chart, k) = linearise ? cs.sRGB_to_RGB(row) : row;
    }
    return chart;
}
