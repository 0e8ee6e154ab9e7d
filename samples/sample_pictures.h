// Pictures of made-up sheet-metal parts: the flat pattern and the bent view, drawn from a few measures.
#pragma once

#include <QByteArray>

namespace partkeep {

enum class SampleShape { Plate, Bracket, Channel, Box };

// Measures of a sample part in millimetres.
struct SamplePart {
    SampleShape shape = SampleShape::Plate;
    double length = 100;
    double width = 60;
    double flange = 20; // of each bent side
    int holes = 2;      // along the length
};

// Bitmap files of 149 by 149 pixels with a palette of 8 bits: the largest that an image block holds.
[[nodiscard]] QByteArray DrawFlatPattern(const SamplePart& part);
[[nodiscard]] QByteArray DrawBentView(const SamplePart& part);

// A PNG file of the flat pattern, large and in full colour.
[[nodiscard]] QByteArray DrawLargePicture(const SamplePart& part);

} // namespace partkeep
