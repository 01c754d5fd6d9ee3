#pragma once

#include "chartprojection.h"

#include <string>
#include <vector>

/// One emulated camera model: its identity, which feature generation it
/// speaks and the light its scene is lit by.
struct CameraModel {
    enum class Generation { Sfnc2, Sfnc1 };

    std::string id;          ///< device id, unique over all transport layers
    std::string modelName;
    std::string serialNumber;
    Generation generation = Generation::Sfnc2;
    int sfncMajor = 2, sfncMinor = 3, sfncSubMinor = 0;
    int colorPipelineVersion = 1;
    double sceneKelvin = 5000.0;
    double balanceIncrement = 1.0 / 256;   ///< BalanceRatio(Abs) step
    double matrixIncrement = 1.0 / 256;    ///< ColorTransformationValue step
    double adjustIncrement = 1.0 / 128;    ///< colour-adjustment hue/saturation step
    int width = 1920;
    int height = 1200;
    SceneGeometry scene;

    /// The three cameras the emulator offers: a medical SFNC 2.x model, a
    /// custom SFNC 1.x model with pipeline version 1, and one with pipeline
    /// version 2 that the calibration does not support.
    static std::vector<CameraModel> defaults();
};
