#include "original.h"

#include "chartlimits.h"

Original::Original(ColorChecker* checker, double scale) : ColorCalibrationStepV1(checker), scale(scale)
{
}

void Original::Run()
{
    for (long r = 0; r < m_output.nr(); ++r)
        for (long c = 0; c < 3; ++c)
            m_output(r, c) = limitTo255(m_input(r, c) * scale);
}
