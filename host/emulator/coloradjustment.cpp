#include "coloradjustment.h"

ColorAdjustment::Params ColorAdjustment::neutral()
{
    return {{0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1}};
}
