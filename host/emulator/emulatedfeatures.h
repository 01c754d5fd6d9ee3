#pragma once

#include "cameramodel.h"
#include "imagepipeline.h"

#include "genicam/nodemap.h"

#include <QString>

#include <atomic>
#include <memory>

/// The feature table of an emulated camera: a GenICam-style node map of the
/// model's feature generation in the state a user's camera would be in, the
/// couplings between features (raw twins, the LUT's index, value and whole
/// table, user sets kept in non-volatile memory), the auto functions, and the
/// pipeline settings the features resolve to.
class EmulatedFeatures {
public:
    /// Factory settings, then the start-up user set. Every feature is
    /// inaccessible while `connected` is false.
    EmulatedFeatures(const CameraModel& model, const std::atomic<bool>& connected);
    ~EmulatedFeatures();

    Kalto::CNodeMap& map();
    const Kalto::CNodeMap& map() const;
    /// The pipeline settings the current features resolve to.
    PipelineSettings resolve() const;
    /// Lets the auto functions act on what one frame showed.
    void runAutoFunctions(const FrameStats& stats);
    /// Frames per second the current exposure time allows.
    double frameRate() const;
    /// Where the camera keeps its user sets.
    QString memoryPath() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
