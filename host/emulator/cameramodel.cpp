#include "cameramodel.h"

std::vector<CameraModel> CameraModel::defaults()
{
    CameraModel medical;
    medical.id = "emu-cmed-0";
    medical.modelName = "kA1920-40ucMED Emulator";
    medical.serialNumber = "40000101";

    CameraModel custom;
    custom.id = "emu-custom-1";
    custom.modelName = "kA1920-40uc Emulation";
    custom.serialNumber = "40000102";
    custom.generation = Generation::Sfnc1;
    custom.sfncMajor = 1;
    custom.sfncMinor = 5;
    custom.sfncSubMinor = 1;
    custom.sceneKelvin = 4500.0;
    custom.balanceIncrement = 1.0 / 128;
    custom.matrixIncrement = 1.0 / 128;
    custom.scene.rotationDeg = -3.0;
    custom.scene.centreX = 0.48;
    custom.scene.perspective = 1.03;

    CameraModel legacy = custom;
    legacy.id = "emu-legacy-2";
    legacy.modelName = "kA1280-30uc Emulation Legacy";
    legacy.serialNumber = "40000103";
    legacy.colorPipelineVersion = 2;
    legacy.sceneKelvin = 3200.0;
    legacy.width = 1280;
    legacy.height = 960;
    legacy.scene.rotationDeg = 1.0;

    return {medical, custom, legacy};
}
