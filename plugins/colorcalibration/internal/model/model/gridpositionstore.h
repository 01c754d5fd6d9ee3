#pragma once

#include "ctrapezoid.h"

#include <QString>

/// Where the user left the grid on a camera, kept across sessions in the
/// settings group "ColCalPlugin/GridPosition <camera>" as fractions of the
/// image size, so that it still fits after the resolution changed.
class GridPositionStore {
public:
    /// `camera` is the camera's identifying text.
    static void store(const QString& camera, const CTrapezoid& grid, double width, double height);
    /// The stored grid at this image size; 10 % to 90 % of it when none is stored.
    static CTrapezoid restore(const QString& camera, double width, double height);
};
