#include "publishedchart.h"

#include "chartlayout.h"

namespace {

// The maker's published CIELAB values (D50, 2° observer) of the 24 patches in
// chart order: L, a, b for charts made after November 2014, then L, a, b for
// charts made before. Taken from the colour-science project's
// colour/characterisation/datasets/colour_checkers/chromaticity_coordinates.py
// (BSD-3-Clause, commit 945f8e3d), DATA_COLORCHECKER24_AFTER_NOV2014_CIE_LAB
// and DATA_COLORCHECKER24_BEFORE_NOV2014_CIE_LAB; the pre-2014 b of patch 3
// (blue sky) is -21.925, as recomputed from that project's own xyY of the
// 2005 data (it lists -21.905).
constexpr double kPublished[ChartLayout::kPatches][6] = {
    {37.54, 14.37, 14.92, 37.986, 13.555, 14.059},     {64.66, 19.27, 17.50, 65.711, 18.130, 17.810},
    {49.32, -3.82, -22.54, 49.927, -4.880, -21.925},   {43.46, -12.74, 22.72, 43.139, -13.095, 21.905},
    {54.94, 9.61, -24.79, 55.112, 8.844, -25.399},     {70.48, -32.26, -0.37, 70.719, -33.397, -0.199},
    {62.73, 35.83, 56.50, 62.661, 36.067, 57.096},     {39.43, 10.75, -45.17, 40.020, 10.410, -45.964},
    {50.57, 48.64, 16.67, 51.124, 48.239, 16.248},     {30.10, 22.54, -20.87, 30.325, 22.976, -21.587},
    {71.77, -24.13, 58.19, 72.532, -23.709, 57.255},   {71.51, 18.24, 67.37, 71.941, 19.363, 67.857},
    {28.37, 15.42, -49.80, 28.778, 14.179, -50.297},   {54.38, -39.72, 32.27, 55.261, -38.342, 31.370},
    {42.43, 51.05, 28.62, 42.101, 53.378, 28.190},     {81.80, 2.67, 80.41, 81.733, 4.039, 79.819},
    {50.63, 51.28, -14.12, 51.935, 49.986, -14.574},   {49.57, -29.71, -28.32, 51.038, -28.631, -28.638},
    {95.19, -1.03, 2.93, 96.539, -0.425, 1.186},       {81.29, -0.57, 0.44, 81.257, -0.638, -0.335},
    {66.89, -0.75, -0.06, 66.766, -0.734, -0.504},     {50.76, -0.13, 0.14, 50.867, -0.153, -0.270},
    {35.63, -0.46, -0.48, 35.656, -0.421, -1.231},     {20.64, 0.07, -0.46, 20.461, -0.079, -0.973},
};

}  // namespace

PublishedChart::PublishedChart(Edition edition) : m_edition(edition) {}

const char* PublishedChart::editionName(Edition edition)
{
    return edition == Edition::Post2014 ? "post-2014" : "pre-2014";
}

bool PublishedChart::editionFromName(const std::string& name, Edition& edition)
{
    for (const Edition e : {Edition::Post2014, Edition::Pre2014})
        if (name == editionName(e)) {
            edition = e;
            return true;
        }
    return false;
}

pixel_lab PublishedChart::lab(int patch) const
{
    const double* v = kPublished[patch] + (m_edition == Edition::Post2014 ? 0 : 3);
    return {v[0], v[1], v[2]};
}

dlib::matrix<double, 3, 3> PublishedChart::bradfordD65ToD50()
{
    // Bradford's sharpened cone responses; the white points are those of ColorSpace (D65) and ICC (D50).
    dlib::matrix<double, 3, 3> cone;
    cone = 0.8951, 0.2664, -0.1614,
           -0.7502, 1.7135, 0.0367,
           0.0389, -0.0685, 1.0296;
    const dlib::matrix<double, 3, 1> source = cone * dlib::trans(ColorSpace().GetWhitePointAtD65());
    const dlib::matrix<double, 3, 1> destination = cone * dlib::trans(whitePointD50());
    dlib::matrix<double, 3, 3> scale = dlib::zeros_matrix<double>(3, 3);
    for (long i = 0; i < 3; ++i)
        scale(i, i) = destination(i) / source(i);
    return dlib::inv(cone) * scale * cone;
}

dlib::matrix<double, 1, 3> PublishedChart::whitePointD50()
{
    dlib::matrix<double, 1, 3> white;
    white = 0.96422, 1.0, 0.82521;
    return white;
}

pixel_xyz PublishedChart::adaptD65ToD50(const pixel_xyz& xyz) const
{
    static const dlib::matrix<double, 3, 3> bradford = bradfordD65ToD50();
    dlib::matrix<double, 3, 1> v;
    v = xyz.X, xyz.Y, xyz.Z;
    const dlib::matrix<double, 3, 1> out = bradford * v;
    return {out(0), out(1), out(2)};
}

pixel_lab PublishedChart::labD50(const dlib::matrix<double, 1, 3>& linearRgb) const
{
    // The measurement is carried to the reference's white (not the reference
    // to D65), so the published numbers are compared as published.
    const pixel_xyz d65 = m_colorSpace.RGB_To_XYZ(linearRgb, m_colorSpace.GetMatrixRGB2XYZatD65());
    return m_colorSpace.XYZ_To_Lab(adaptD65ToD50(d65), whitePointD50());
}

double PublishedChart::deltaE(int patch, const dlib::matrix<double, 1, 3>& linearRgb) const
{
    return m_colorSpace.DeltaE2000(lab(patch), labD50(linearRgb), false);
}

double PublishedChart::deltaC(int patch, const dlib::matrix<double, 1, 3>& linearRgb) const
{
    return m_colorSpace.DeltaC2000(lab(patch), labD50(linearRgb));
}
