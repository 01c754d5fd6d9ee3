// The whole calibration chain on a realistic measured chart.
#include "colorcalibrationv1.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

dlib::matrix<double, 24, 3> loadChart()
{
    std::ifstream in(COLCAL_SAMPLE_CHART);
    dlib::matrix<double, 24, 3> chart;
    std::string line;
    long row = 0;
    while (std::getline(in, line) && row < 24) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream fields(line);
        char comma;
        fields >> chart(row, 0) >> comma >> chart(row, 1) >> comma >> chart(row, 2);
        ++row;
    }
    if (row != 24)
        throw std::runtime_error("sample chart needs 24 rows: " COLCAL_SAMPLE_CHART);
    return chart;
}

void BM_ColorCalibrationRun(benchmark::State& state)
{
    const dlib::matrix<double, 24, 3> chart = loadChart();
    ColorCalibrationV1 engine;
    for (auto _ : state) {
        engine.SetChart(COLORCALIBRATION_STEP_ORIGINAL, chart);
        benchmark::DoNotOptimize(engine.Run());
    }
}
BENCHMARK(BM_ColorCalibrationRun)->Unit(benchmark::kMicrosecond);

}  // namespace
