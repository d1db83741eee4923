#pragma once

// Converts between a size in bytes and the position of a size slider, so that
// the knob moves on a base-10 logarithmic scale: position 6 is 1,000,000
// bytes, position 9 is 1,000,000,000. Both directions work in single
// precision, as the sliders do.
class KVSizeValueTransformer
{
public:
    KVSizeValueTransformer() = delete;

    // Bytes to slider position: log10.
    static float transformedValue(float bytes);
    // Slider position to bytes: 10 to the power of the position.
    static float reverseTransformedValue(float position);
};
