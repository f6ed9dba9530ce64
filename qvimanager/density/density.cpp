#include "qvimanager/density/density.h"

#include "qvimanager/density/density_calculator.h"

namespace CMetry {

// The vector's elements start at 0.0.
QVDensity::QVDensity() : densities(4), valid(false), densityStandard(DensityStdUndefined) {}

QVDensity::QVDensity(float black, float cyan, float magenta, float yellow, const QVMeasureConditions& measureConditions,
                     QVDensityStdTYPE standard, const UserFilterPointer& filter)
    : densities(4), valid(true), userFilter(filter), densityStandard(standard), conditions(measureConditions)
{
    densities[DensFilterBlack] = black;
    densities[DensFilterCyan] = cyan;
    densities[DensFilterMagenta] = magenta;
    densities[DensFilterYellow] = yellow;
}

float QVDensity::GetDensity(QVDensFilterTYPE filter) const
{
    return densities[static_cast<unsigned long>(filter)];
}

void QVDensity::SetDensity(float density, QVDensFilterTYPE filter)
{
    densities[static_cast<unsigned long>(filter)] = density;
}

void QVDensity::SetAllDensities(const Utilities::Vector<float>& values)
{
    densities = values;
    valid = true;
}

float QVDensity::operator[](unsigned short index) const
{
    return densities[index];
}

float& QVDensity::operator[](unsigned short index)
{
    return densities[index];
}

float QVDensity::operator[](DensityFilterModeTYPE mode) const
{
    if (mode == DensityFilterModeAuto) {
        return densities[static_cast<unsigned long>(DensityCalculator::GetDensityFilter(*this))];
    }
    if (mode == DensityFilterModeMax) {
        return 0.0f;
    }
    return densities[static_cast<unsigned long>(mode)];
}

float QVDensity::operator[](DensityFilterModeTYPE mode)
{
    return static_cast<const QVDensity&>(*this)[mode];
}

QVDensityStdTYPE QVDensity::GetDensityStd() const
{
    return densityStandard;
}

void QVDensity::SetDensityStd(QVDensityStdTYPE standard)
{
    densityStandard = standard;
}

QVDensity::UserFilterPointer QVDensity::GetUserDefinedFilter() const
{
    return userFilter;
}

void QVDensity::SetUserDefinedFilter(const UserFilterPointer& filter)
{
    userFilter = filter;
}

QVMeasureConditions QVDensity::GetPhysMeasCond() const
{
    return conditions;
}

void QVDensity::SetPhysMeasCond(const QVMeasureConditions& measureConditions)
{
    conditions = measureConditions;
}

bool QVDensity::IsValid() const
{
    return valid;
}

Diagnostics::String QVDensity::GetValueString() const
{
    Diagnostics::String text("Densities: ");
    for (unsigned long i = 0; i < densities.GetSize(); ++i) {
        text += Diagnostics::String(densities[i]);
        text += ", ";
    }
    text += "Density Standart: ";
    text += CMetry::GetValueString(densityStandard);
    return text;
}

} // namespace CMetry
