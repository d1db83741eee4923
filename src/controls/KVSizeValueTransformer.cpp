#include "controls/KVSizeValueTransformer.h"

#include <cmath>

float KVSizeValueTransformer::transformedValue(float bytes)
{
    return std::log10(bytes);
}

float KVSizeValueTransformer::reverseTransformedValue(float position)
{
    return std::pow(10.0f, position);
}
