#include "bc6x2.h"

#include "chartlimits.h"
#include "colorchecker.h"

#include <stdexcept>

namespace {

using ChartLayout::kChromatic;
constexpr long kRows = 3 * kChromatic;

// Per sector: channel index (0 R, 1 G, 2 B) of the largest, middle and smallest value.
constexpr int kSectorOrder[3][6] = {
    {0, 1, 1, 2, 2, 0},  // largest
    {1, 0, 2, 1, 0, 2},  // middle
    {2, 2, 0, 0, 1, 1},  // smallest
};
// +1 where largest/middle run R->G, G->B or B->R, -1 against that direction.
constexpr int kSectorSign[6] = {1, -1, 1, -1, 1, -1};

// Colour index of the primary (by largest channel) and the secondary (opposite
// the smallest channel) in the parameter order red, yellow, green, cyan, blue, magenta.
constexpr int kPrimaryOfChannel[3] = {0, 2, 4};
constexpr int kSecondaryOppositeChannel[3] = {3, 5, 1};

int signOf(int largest, int middle)
{
    return middle == (largest + 1) % 3 ? 1 : -1;
}

}  // namespace

Bc6x2::Bc6x2(ColorChecker* checker) : ColorCalibrationStepV1(checker) {}

void Bc6x2::Run()
{
    Calculate();
    Apply();
}

int Bc6x2::HueToSector6(double& r, double& g, double& b)
{
    if (r >= b && r > g)
        return b > g ? 5 : 0;
    if (g >= r && g > b)
        return r > b ? 1 : 2;
    if (b >= g && b > r)
        return g > r ? 3 : 4;
    return -1;
}

dlib::matrix<double, 1, 3> Bc6x2::Bc6x2Operator(dlib::matrix<double, 1, 3> rgb,
                                                dlib::matrix<double, 12, 1> P)
{
    const double r = rgb(0), g = rgb(1), b = rgb(2);
    int smallest, largest;
    if (b >= r && g > r) {
        smallest = 0;
        largest = b >= g ? 2 : 1;
    } else if (r >= g && b > g) {
        smallest = 1;
        largest = r >= b ? 0 : 2;
    } else {
        // Greys land here too; with all differences 0 they come back unchanged.
        smallest = 2;
        largest = g >= r ? 1 : 0;
    }
    const int middle = 3 - smallest - largest;

    const int i1 = kPrimaryOfChannel[largest];
    const int i2 = kSecondaryOppositeChannel[smallest];
    const double sigma = signOf(largest, middle);
    const double h1 = sigma * P(i1), s1 = P(i1 + 6);
    const double h2 = sigma * P(i2), s2 = P(i2 + 6);
    const double mx = rgb(largest), md = rgb(middle), mn = rgb(smallest);
    const double d1 = mx - md, d2 = md - mn;

    dlib::matrix<double, 1, 3> out;
    out(largest) = mx + h2 * d2;
    out(middle) = mx - (h1 + s1) * d1 - h2 * d2;
    out(smallest) = mx - (s1 - h1) * d1 - s2 * d2;
    return out;
}

void Bc6x2::Calculate()
{
    const dlib::matrix<double, ChartLayout::kPatches, 3> target = m_checker->GetTargetRgb();
    dlib::matrix<double, kRows, 1> t;
    dlib::matrix<double, kRows, 1> f0;
    dlib::matrix<double, kRows, 12> d = dlib::zeros_matrix<double>(kRows, 12);

    for (long k = 0; k < kChromatic; ++k) {
        double r = m_input(k, 0), g = m_input(k, 1), b = m_input(k, 2);
        const int sector = HueToSector6(r, g, b);
        if (sector < 0)
            throw std::runtime_error("Cannot determine hue sector on gray image");

        const int largest = kSectorOrder[0][sector];
        const int middle = kSectorOrder[1][sector];
        const int smallest = kSectorOrder[2][sector];
        const int i1 = kPrimaryOfChannel[largest];
        const int i2 = kSecondaryOppositeChannel[smallest];
        const double sigma = kSectorSign[sector];
        const double mx = m_input(k, largest), md = m_input(k, middle), mn = m_input(k, smallest);
        const double d1 = mx - md, d2 = md - mn;

        // The operator is f0 + D * P: every output channel starts at the largest value.
        const long row = 3 * k;
        d(row + largest, i2) = sigma * d2;
        d(row + middle, i1) = -sigma * d1;
        d(row + middle, i1 + 6) = -d1;
        d(row + middle, i2) = -sigma * d2;
        d(row + smallest, i1) = sigma * d1;
        d(row + smallest, i1 + 6) = -d1;
        d(row + smallest, i2 + 6) = -d2;
        for (long c = 0; c < 3; ++c) {
            f0(row + c) = mx;
            t(row + c) = target(k, c);
        }
    }

    const dlib::matrix<double, kRows, kRows> jac =
        dlib::subm(m_checker->GetTargetFullJacobian(), 0, 0, kRows, kRows);
    const dlib::matrix<double, kRows, 12> kMat = jac * d;
    const dlib::matrix<double, kRows, 1> y = jac * (t - f0);
    params = dlib::pinv(kMat) * y;
}

void Bc6x2::Apply()
{
    for (long k = 0; k < ChartLayout::kPatches; ++k) {
        const dlib::matrix<double, 1, 3> out = Bc6x2Operator(dlib::rowm(m_input, k), params);
        for (long c = 0; c < 3; ++c)
            m_output(k, c) = limitTo255(out(c));
    }
}

void Bc6x2::GetBc6x2(dlib::matrix<double, 12, 1>& p) const
{
    if (&p != &params)
        p = params;
}
