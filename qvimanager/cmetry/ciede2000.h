#ifndef QVIMANAGER_CMETRY_CIEDE2000_H
#define QVIMANAGER_CMETRY_CIEDE2000_H

// DeltaE2000: the CIE 2000 total colour difference of two colours, the
// formula of CIE 142-2001, as a free function beside the engine.
//
// It is not one of the formulas of "ColorSpaceDescription.DeltaEFormula":
// CMetryService::GetDeltaE does not dispatch to it, and a caller asks for it
// by calling it.
//
// Arithmetic: the components are widened to double, every step runs in
// double, and the result is rounded to float once, at the end. The angles
// are in degrees, as the formula writes them; the sines and cosines take
// them converted to radians.
//
// Hue conventions, which decide the result near the neutral axis and where
// the two hues lie on either side of 0 degrees:
// - The hue h' = atan2(b*, a') of a colour is taken in degrees from 0 to
//   360 (a negative angle gains 360). An achromatic colour (a' and b* both 0,
//   either sign of zero) has hue 0.
// - The hue difference dh' is 0 when either chroma C' is 0. Otherwise it is
//   h'2 - h'1, less 360 when that is above 180 and plus 360 when it is below
//   -180; a difference of exactly 180 keeps its sign.
// - The mean hue is the sum h'1 + h'2 when either chroma C' is 0 (that is the
//   hue of the chromatic one). Otherwise it is (h'1 + h'2) / 2 when
//   |h'1 - h'2| is at most 180; beyond 180 it is (h'1 + h'2 + 360) / 2 when
//   the sum is below 360, and (h'1 + h'2 - 360) / 2 when it is not.
// - The chroma weight sqrt(C^7 / (C^7 + 25^7)) of the a* correction G and of
//   the rotation term is evaluated as sqrt(1 / (1 + (25 / C)^7)), and as 0
//   for C = 0, so that no chroma a float can hold overflows the seventh
//   power.
//
// With these conventions, the published reference pairs of the formula
// (data/ciede2000) come out to their 4 decimals in both argument orders.

#include "qvimanager/cmetry/color_vector.h"

namespace CMetry {

// The CIE 2000 colour difference between `reference` and `sample`, with the
// parametric factors kL, kC and kH dividing the lightness, chroma and hue
// terms (1, 1, 1 for the reference conditions of the formula).
//
// Inputs: components 0, 1 and 2 of each vector are L*, a* and b*.
// Component 3 is not read.
// - A vector of colour space "CIELab" is taken as it is.
// - A vector of colour space "CIEXYZ" is first converted to CIELab against
//   the white of its own conditions, exactly as CMetryService::GetVector
//   (vector, "CIELab") converts it (L* below 0 clamped to 0). This sets the
//   engine's shared weight factors to the vector's illumination and
//   observer, as every conversion does, so it is for one thread at a time.
//   A CIELab vector touches no shared state.
// - Any other colour space (the polar forms CIELCh and LCHvq, CIELuv, LABvq,
//   HunterLab, RGB, CMYK, ...) raises ExceptionCMetry with the text
//   "DeltaE2000 not supported for ColorSpace " followed by the space. The
//   engine has no conversion from those to CIELab.
// - A vector whose conditions say "DeltaVector" holds a difference, not a
//   colour, and raises ExceptionCMetry with "DeltaE2000 not supported for a
//   DeltaVector".
// Each vector is read under its own conditions; the two condition sets are
// not compared (as for the engine's own vector differences).
//
// Parametric factors: each must be finite and greater than 0, since the
// formula divides by it. Otherwise ExceptionCMetry is raised with
// "DeltaE2000: the parametric factor kL must be finite and greater than 0"
// (kC, kH likewise); the factors are checked in the order kL, kC, kH, and
// before the vectors. These texts are not translated.
//
// The formula is symmetric: swapping `reference` and `sample` gives the same
// float. Identical colours give 0. Finite components and factors give a
// finite double; rounded to float it is infinite only when it exceeds the
// largest float, which takes a factor far below 1. A NaN or infinite
// component gives a result that is not finite, and nothing is raised for it.
float DeltaE2000(const QVColorVector& reference, const QVColorVector& sample, float kL = 1, float kC = 1,
                 float kH = 1);

} // namespace CMetry

#endif
