// GENERATED, DO NOT EDIT.
// Made by tools/tablegen/generate_cie_tables.py from the CIE tables in
// tools/tablegen/cie/ (their README names the published source of each).
// Every value is the float literal of its published digits.

#ifndef QVIMANAGER_CMETRY_TABLES_CIE_TABLES_H
#define QVIMANAGER_CMETRY_TABLES_CIE_TABLES_H

namespace CMetry {
namespace Tables {

// CIE standard illuminant A, 1 nm (ISO/CIE 11664-2:2022 Table A.1): 300 to 830 nm, step 1 nm, 531 values.
constexpr unsigned short IlluminantAMinimum = 300;
constexpr unsigned short IlluminantAMaximum = 830;
constexpr unsigned short IlluminantAStep = 1;
extern const float IlluminantA[531];

// CIE illuminant B, 5 nm, 320 to 770 nm (CIE 15:2004; 515 nm as in Wyszecki & Stiles): 320 to 770 nm, step 5 nm, 91 values.
constexpr unsigned short IlluminantBMinimum = 320;
constexpr unsigned short IlluminantBMaximum = 770;
constexpr unsigned short IlluminantBStep = 5;
extern const float IlluminantB[91];

// CIE illuminant C, 5 nm (CIE 015:2018 Table 5): 300 to 780 nm, step 5 nm, 97 values.
constexpr unsigned short IlluminantCMinimum = 300;
constexpr unsigned short IlluminantCMaximum = 780;
constexpr unsigned short IlluminantCStep = 5;
extern const float IlluminantC[97];

// CIE illuminant D75 at two decimals, 5 nm (CIE daylight method): 300 to 830 nm, step 5 nm, 107 values.
constexpr unsigned short IlluminantD75Minimum = 300;
constexpr unsigned short IlluminantD75Maximum = 830;
constexpr unsigned short IlluminantD75Step = 5;
extern const float IlluminantD75[107];

// CIE standard illuminant D65, 1 nm (ISO/CIE 11664-2:2022 Table B.1): 300 to 830 nm, step 1 nm, 531 values.
constexpr unsigned short IlluminantD65Minimum = 300;
constexpr unsigned short IlluminantD65Maximum = 830;
constexpr unsigned short IlluminantD65Step = 1;
extern const float IlluminantD65[531];

// CIE illuminant D50 at two decimals, 5 nm: 300 to 830 nm, step 5 nm, 107 values.
constexpr unsigned short IlluminantD50Minimum = 300;
constexpr unsigned short IlluminantD50Maximum = 830;
constexpr unsigned short IlluminantD50Step = 5;
extern const float IlluminantD50[107];

// CIE fluorescent illuminants F1 to F12, 5 nm, 380 to 780 nm, one row of 81 values after the other (CIE 015:2018 Tables 10.1 to 10.3): 380 to 780 nm, step 5 nm, 972 values.
constexpr unsigned short IlluminantFMinimum = 380;
constexpr unsigned short IlluminantFMaximum = 780;
constexpr unsigned short IlluminantFStep = 5;
extern const float IlluminantF[972];

// CIE daylight component S0, 5 nm (CIE 015:2018 Table 6): 300 to 830 nm, step 5 nm, 107 values.
constexpr unsigned short DaylightS0Minimum = 300;
constexpr unsigned short DaylightS0Maximum = 830;
constexpr unsigned short DaylightS0Step = 5;
extern const float DaylightS0[107];

// CIE daylight component S1, 5 nm (CIE 015:2018 Table 6): 300 to 830 nm, step 5 nm, 107 values.
constexpr unsigned short DaylightS1Minimum = 300;
constexpr unsigned short DaylightS1Maximum = 830;
constexpr unsigned short DaylightS1Step = 5;
extern const float DaylightS1[107];

// CIE daylight component S2, 5 nm (CIE 015:2018 Table 6): 300 to 830 nm, step 5 nm, 107 values.
constexpr unsigned short DaylightS2Minimum = 300;
constexpr unsigned short DaylightS2Maximum = 830;
constexpr unsigned short DaylightS2Step = 5;
extern const float DaylightS2[107];

// CIE 1931 2-degree standard observer, 1 nm (CIE 018:2019 Table 6), x-bar: 360 to 830 nm, step 1 nm, 471 values.
constexpr unsigned short TwoDegreeXBarMinimum = 360;
constexpr unsigned short TwoDegreeXBarMaximum = 830;
constexpr unsigned short TwoDegreeXBarStep = 1;
extern const float TwoDegreeXBar[471];

// CIE 1931 2-degree standard observer, 1 nm (CIE 018:2019 Table 6), y-bar: 360 to 830 nm, step 1 nm, 471 values.
constexpr unsigned short TwoDegreeYBarMinimum = 360;
constexpr unsigned short TwoDegreeYBarMaximum = 830;
constexpr unsigned short TwoDegreeYBarStep = 1;
extern const float TwoDegreeYBar[471];

// CIE 1931 2-degree standard observer, 1 nm (CIE 018:2019 Table 6), z-bar up to 650 nm, where it has reached zero: 360 to 650 nm, step 1 nm, 291 values.
constexpr unsigned short TwoDegreeZBarMinimum = 360;
constexpr unsigned short TwoDegreeZBarMaximum = 650;
constexpr unsigned short TwoDegreeZBarStep = 1;
extern const float TwoDegreeZBar[291];

// CIE 1964 10-degree standard observer, 1 nm (ISO/CIE 11664-1:2019 Table 2), x-bar: 360 to 830 nm, step 1 nm, 471 values.
constexpr unsigned short TenDegreeXBarMinimum = 360;
constexpr unsigned short TenDegreeXBarMaximum = 830;
constexpr unsigned short TenDegreeXBarStep = 1;
extern const float TenDegreeXBar[471];

// CIE 1964 10-degree standard observer, 1 nm (ISO/CIE 11664-1:2019 Table 2), y-bar: 360 to 830 nm, step 1 nm, 471 values.
constexpr unsigned short TenDegreeYBarMinimum = 360;
constexpr unsigned short TenDegreeYBarMaximum = 830;
constexpr unsigned short TenDegreeYBarStep = 1;
extern const float TenDegreeYBar[471];

// CIE 1964 10-degree standard observer, 1 nm (ISO/CIE 11664-1:2019 Table 2), z-bar up to 560 nm, where it has reached zero: 360 to 560 nm, step 1 nm, 201 values.
constexpr unsigned short TenDegreeZBarMinimum = 360;
constexpr unsigned short TenDegreeZBarMaximum = 560;
constexpr unsigned short TenDegreeZBarStep = 1;
extern const float TenDegreeZBar[201];

} // namespace Tables
} // namespace CMetry

#endif
