#include "qvimanager/cmetry/spectrum.h"

#include "qvimanager/foundation/exception.h"

using Utilities::ListIterator;
using Utilities::String;
using Utilities::Vector;

namespace CMetry {

namespace {

// The grid as the fixed condition keys give it. The texts never change, so
// they are read and parsed once.
struct Grid {
    double minimum;
    double maximum;
    short count;
};

const Grid& TheGrid()
{
    static const Grid grid = [] {
        const QVMeasureConditions conditions;
        return Grid{conditions.GetMeasureCondition(String("Physical.WavelengthSpectrumMin")).GetDouble(),
                    conditions.GetMeasureCondition(String("Physical.WavelengthSpectrumMax")).GetDouble(),
                    conditions.GetMeasureCondition(String("Physical.NumberOfDataPointsSpectrum")).GetShort()};
    }();
    return grid;
}

} // namespace

QVSpectrum::QVSpectrum() : values(), valid(true), conditions() {}

QVSpectrum::QVSpectrum(const Vector<float>& source) : QVSpectrum(source, QVMeasureConditions()) {}

QVSpectrum::QVSpectrum(const Vector<float>& source, const QVMeasureConditions& measureConditions)
    : values(), valid(true), conditions(measureConditions)
{
    for (unsigned long i = 0; i < NumberOfDataPoints; ++i) {
        values[i] = source[i];
    }
}

QVSpectrum::QVSpectrum(const float (&source)[NumberOfDataPoints]) : QVSpectrum(source, QVMeasureConditions()) {}

QVSpectrum::QVSpectrum(const float (&source)[NumberOfDataPoints], const QVMeasureConditions& measureConditions)
    : values(), valid(true), conditions(measureConditions)
{
    for (unsigned long i = 0; i < NumberOfDataPoints; ++i) {
        values[i] = source[i];
    }
}

QVSpectrum::QVSpectrum(const QVSpectrum& other) = default;

QVSpectrum& QVSpectrum::operator=(const QVSpectrum& other)
{
    if (this != &other) {
        for (unsigned long i = 0; i < NumberOfDataPoints; ++i) {
            values[i] = other.values[i];
        }
        valid = other.valid;
        conditions = other.conditions;
    }
    return *this;
}

QVSpectrum::~QVSpectrum() = default;

bool QVSpectrum::operator==(const QVSpectrum& other) const
{
    bool equal = true;
    for (unsigned long i = 0; i < NumberOfDataPoints; ++i) {
        equal = (values[i] == other.values[i]) && equal;
    }
    equal = (valid == other.valid) && equal;
    return (conditions == other.conditions) && equal;
}

const float& QVSpectrum::operator[](long index) const
{
    if (index < 0 || index >= NumberOfDataPoints) {
        throw Utilities::ExceptionOutOfBound("QVSpectrum::operator[]: index out of range");
    }
    return values[index];
}

Vector<float> QVSpectrum::GetValues() const
{
    Vector<float> result(NumberOfDataPoints);
    for (unsigned long i = 0; i < NumberOfDataPoints; ++i) {
        result[i] = values[i];
    }
    return result;
}

const QVMeasureConditions& QVSpectrum::GetMeasureConditions() const
{
    return conditions;
}

bool QVSpectrum::IsValid() const
{
    for (const float value : values) {
        if (value > 0.0f) {
            return true;
        }
    }
    return false;
}

Diagnostics::String QVSpectrum::GetValueString() const
{
    return Diagnostics::String(valid ? "valid" : "invalid");
}

QVMeasureConditions QVSpectrum::GetPhysMeasCond() const
{
    return conditions;
}

void QVSpectrum::SetMeasureConditions(const QVMeasureConditions& measureConditions)
{
    conditions = measureConditions;
}

unsigned short QVSpectrum::GetNrOfDataPoints() const
{
    return NumberOfDataPoints;
}

unsigned short QVSpectrum::GetArrayIndex(unsigned short wavelength) const
{
    const Grid& grid = TheGrid();
    const double position = (wavelength - grid.minimum) / ((grid.maximum - grid.minimum) / (grid.count - 1));
    const auto index = static_cast<long>(position); // towards zero, no rounding
    if (index < 0 || index >= grid.count) {
        return 0;
    }
    return static_cast<unsigned short>(index);
}

unsigned short QVSpectrum::GetWaveLength(unsigned short index) const
{
    const Grid& grid = TheGrid();
    if (index >= grid.count) {
        return 0;
    }
    return static_cast<unsigned short>(index * (grid.maximum - grid.minimum) / (grid.count - 1) + grid.minimum);
}

// ---------------------------------------------------------------- QVSample

short QVSample::AddSample(const QVSample& other)
{
    // Counted first, so that a sample taking in itself ends.
    const unsigned long taken = other.GetItemCount();
    ListIterator<QVSpectrum> spectrum = other.Begin();
    for (unsigned long i = 0; i < taken; ++i, spectrum++) {
        Append(spectrum.Current());
    }
    return static_cast<short>(GetItemCount());
}

void QVSample::SetSpectrum(const QVSpectrum& spectrum)
{
    Append(spectrum);
}

bool QVSample::GetSpectrum(const QVMeasureConditions&, QVSpectrum& spectrum) const
{
    if (GetItemCount() == 0) {
        return false;
    }
    spectrum = Begin().Current();
    return true;
}

bool QVSample::operator==(const QVSample& other) const
{
    return Begin().Current() == other.Begin().Current();
}

Diagnostics::String QVSample::GetValueString() const
{
    Diagnostics::String text("MeasureValueList: ");
    text += Diagnostics::String(GetItemCount());
    return text;
}

} // namespace CMetry
