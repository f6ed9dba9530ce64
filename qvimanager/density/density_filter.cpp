#include "qvimanager/density/density_filter.h"

namespace CMetry {

namespace {

constexpr int kPoints = 36;

// Grid index of a wavelength in nm.
constexpr int IndexOf(int nanometres)
{
    return (nanometres - 380) / 10;
}

// A run of response values from a first wavelength on, in 10 nm steps.
struct Response {
    int firstNanometres;
    int count;
    const float* values;
};

// The seven-point shape of DIN, shifted per colour.
const float kDin[] = {0.04054054f, 0.10810811f, 0.21621622f, 0.27027026f, 0.21621622f, 0.10810811f, 0.04054054f};
const float kOne[] = {1.0f};
const float kAnsiACyan[] = {0.00126881f, 0.14917082f, 0.3429214f,  0.2547906f,  0.13785441f,
                            0.06618383f, 0.02722796f, 0.012208f,   0.00500665f, 0.00204724f,
                            0.00082987f, 0.00031892f, 0.00012345f, 0.00004801f};
const float kAnsiAMagenta[] = {0.00014374f, 0.02120959f, 0.19324999f, 0.31942147f, 0.2571343f,
                               0.14086486f, 0.05302396f, 0.01296851f, 0.00186223f, 0.00012138f};
const float kAnsiAYellow[] = {0.01310135f, 0.21584478f, 0.3275338f,  0.2675951f,
                              0.1365816f,  0.03602872f, 0.00319345f, 0.00012119f};
const float kAnsiTCyan[] = {0.00019168f, 0.00143761f, 0.09584052f, 0.3194684f,  0.27154815f,
                            0.17570762f, 0.0798671f,  0.03194684f, 0.01597342f, 0.00479203f,
                            0.00159734f, 0.00095841f, 0.0004792f,  0.00015973f, 0.00003195f};
const float kAnsiTMagenta[] = {0.00190006f, 0.00950029f, 0.05700171f, 0.12920389f, 0.17480524f,
                               0.1900057f,  0.16720502f, 0.12540376f, 0.07980239f, 0.04180125f,
                               0.01710051f, 0.00475014f, 0.00133004f, 0.00017101f};
const float kAnsiTYellow[] = {0.00042192f, 0.00210959f, 0.00843834f, 0.02390864f, 0.05625563f, 0.08438344f,
                              0.11532403f, 0.13220072f, 0.14063907f, 0.13641989f, 0.1195432f,  0.09141539f,
                              0.05625563f, 0.02531503f, 0.00703195f, 0.00028128f, 0.00005626f};
const float kSpiCyan[] = {0.00076974f, 0.00378494f, 0.05486815f, 0.46867895f,
                          0.42483968f, 0.04224447f, 0.00414065f, 0.00067339f};
const float kSpiMagenta[] = {0.00036493f, 0.00292893f, 0.03309005f, 0.39563477f,
                             0.49147895f, 0.06993199f, 0.00531376f, 0.00125661f};
const float kSpiYellow[] = {0.0001496f,  0.0008944f,  0.003028f,   0.12305775f, 0.48156747f,
                            0.3657375f,  0.02073189f, 0.00403653f, 0.00079683f};

// Cyan, magenta, yellow of standards 0 to 4.
const Response kColourFilters[5][3] = {
    {{590, 7, kDin}, {500, 7, kDin}, {400, 7, kDin}},
    {{620, 1, kOne}, {530, 1, kOne}, {430, 1, kOne}},
    {{600, 14, kAnsiACyan}, {500, 10, kAnsiAMagenta}, {420, 8, kAnsiAYellow}},
    {{570, 15, kAnsiTCyan}, {480, 14, kAnsiTMagenta}, {380, 17, kAnsiTYellow}},
    {{590, 8, kSpiCyan}, {500, 8, kSpiMagenta}, {390, 9, kSpiYellow}},
};

// The visual response shared by standards 0 to 4, from 400 to 730 nm; 380
// and 390 nm stay 0. It sums to 100.
const float kBlack[] = {0.0005454f,  0.00196655f, 0.00778611f, 0.02652581f, 0.06118588f, 0.11655257f, 0.2102807f,
                        0.3616066f,  0.62153214f, 1.0393795f,  1.7921762f,  3.079981f,   4.771312f,   6.322516f,
                        7.6003876f,  8.568938f,   9.222837f,   9.457845f,   9.228659f,   8.541516f,   7.5473623f,
                        6.3571815f,  5.072025f,   3.7051337f,  2.562605f,   1.6367719f,  0.9722966f,  0.5302566f,
                        0.2921934f,  0.14588082f, 0.07534604f, 0.03978899f, 0.01949865f, 0.01001628f};
const Response kBlackFilter = {400, 34, kBlack};

void Write(Filter& filter, const Response& response)
{
    for (int i = 0; i < response.count; ++i) {
        // Through the writable index: the cached sum is recomputed on demand.
        filter[IndexOf(response.firstNanometres) + i] = response.values[i];
    }
}

} // namespace

Utilities::Vector<float[36]> DensityFilter::asUserDensFilter(4);

namespace {

// The store starts at its default of all ones.
const bool kStoreFilled = [] {
    DensityFilter::SetUserDensityStandardToDefault();
    return true;
}();

} // namespace

DensityFilter::DensityFilter() : standard(DensityStdUndefined), filters(4) {}

DensityFilter::DensityFilter(QVDensityStdTYPE densityStandard) : DensityFilter()
{
    SetDensityStandard(densityStandard);
}

void DensityFilter::SetDensityStandard(QVDensityStdTYPE newStandard)
{
    if (newStandard == standard) {
        return;
    }
    standard = newStandard;
    if (newStandard == DensityStdUser) {
        for (unsigned long filter = 0; filter < 4; ++filter) {
            filters[filter] = Filter(asUserDensFilter[filter]);
        }
        return;
    }
    const float zeros[kPoints] = {};
    const Filter empty(zeros);
    for (unsigned long filter = 0; filter < 4; ++filter) {
        filters[filter] = empty;
    }
    if (newStandard >= DensityStdDIN && newStandard <= DensityStdSPI) {
        for (unsigned long colour = 0; colour < 3; ++colour) {
            Write(filters[colour + 1], kColourFilters[newStandard][colour]);
        }
    }
    Write(filters[DensFilterBlack], kBlackFilter);
}

QVDensityStdTYPE DensityFilter::GetDensStd() const
{
    return standard;
}

const Filter& DensityFilter::operator[](unsigned short filter) const
{
    return filters[filter];
}

void DensityFilter::SetUserDensityStandardToDefault()
{
    for (unsigned long filter = 0; filter < 4; ++filter) {
        for (float& value : asUserDensFilter[filter]) {
            value = 1.0f;
        }
    }
}

const float (&DensityFilter::GetUserDefinedFilter(unsigned long index))[36]
{
    return asUserDensFilter[index];
}

void DensityFilter::SetUserDefinedFilter(const float (&values)[36], unsigned long index)
{
    float(&target)[36] = asUserDensFilter[index];
    for (int i = 0; i < kPoints; ++i) {
        target[i] = values[i];
    }
}

Diagnostics::String DensityFilter::GetValueString() const
{
    Diagnostics::String text("Density Standart: ");
    text += CMetry::GetValueString(standard);
    return text;
}

} // namespace CMetry
