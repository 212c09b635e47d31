#pragma once

#include <cstdint>

namespace torvane {

// The loops over the pixels of a row that drawing spends its time in. The pixels are independent
// of each other: several are done at a time, as many as the processor can, with the same results.

// A line between two points, in pixels.
struct PixelLine {
  float x, y;          // where it begins
  float dx, dy;        // from there to its end
  float stepX, stepY;  // along the line per pixel, as fractions of its length; 0 without length
};

// Sets each value to the square of the pixel centre's distance from the line where that is less.
// The first pixel's centre is at (column, row).
void keepNearer(float* squares, int count, int column, int row, const PixelLine& line);

// Makes of such squares how much of the pixel is covered, 0 to 1, by a line that covers nothing
// from the distance `reach` on.
void squaresToCoverage(float* squares, int count, float reach);

// Lays an opaque colour over premultiplied pixels, each covered as `coverage` says.
void blend(std::uint32_t* pixels, const float* coverage, int count, std::uint32_t colour);

}  // namespace torvane
