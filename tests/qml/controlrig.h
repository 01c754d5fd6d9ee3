#pragma once

#include "colorcorrectionmodel.h"
#include "emulatedcamera.h"
#include "emulatedpool.h"

#include "genicam/nodemap.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QString>

#include <memory>

/// A slider of step 2 (`Control`) over the session of the emulated medical
/// camera, opened with the auto functions off as step 2 has it.
template <class Control>
class ControlRig {
public:
    ControlRig() : model(pool.createModel()), control(model.get())
    {
        pool.setFrameSize(EmulatedPool::kMedical, 320, 200);
        opened = model->Open(pool.info(EmulatedPool::kMedical)) && model->DisableAutoFunctions();
    }
    ~ControlRig() { model->Close(); }

    Kalto::CNodeMap& camera() { return pool.device(EmulatedPool::kMedical).nodeMap(); }

    EmulatedPool pool;
    std::unique_ptr<ColorCorrectionModel> model;
    Control control;
    bool opened = false;
};

/// With the session closed under it, the slider's write of `sliderValue` is
/// refused: `message` becomes its last error, notified once.
template <class Control>
void expectRefusedWrite(ControlRig<Control>& rig, double sliderValue, const QString& message)
{
    ASSERT_TRUE(rig.opened);
    ASSERT_TRUE(rig.control.initialize());
    rig.model->Close();
    QSignalSpy error(&rig.control, &Control::lastErrorChanged);
    rig.control.setValue(sliderValue);
    EXPECT_EQ(error.count(), 1);
    EXPECT_EQ(rig.control.lastError(), message);
}
