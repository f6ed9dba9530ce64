#ifndef QVIMANAGER_TESTS_CMETRY_TEST_ACCESS_H
#define QVIMANAGER_TESTS_CMETRY_TEST_ACCESS_H

// The one definition of CMetry::TestAccess, the friend through which tests
// reach the private members of the colorimetry classes. Every test file of
// the cmetry tests includes this header instead of defining its own, so the
// program holds a single definition of the class.

#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/string.h"

namespace CMetry {

class TestAccess {
public:
    // ------------------------------------------------------------ QVMeasureConditions

    static QVIllumination GetIllumination(const QVMeasureConditions& conditions)
    {
        return conditions.GetIllumination();
    }
    static QVObserverTYPE GetObserver(const QVMeasureConditions& conditions) { return conditions.GetObserver(); }
    static QVWhiteBaseTYPE GetWhiteBase(const QVMeasureConditions& conditions) { return conditions.GetWhiteBase(); }
    static QVDensityStdTYPE GetDensityStandard(const QVMeasureConditions& conditions)
    {
        return conditions.GetDensityStandard();
    }
    static DensityFilterModeTYPE GetDensityFilterMode(const QVMeasureConditions& conditions)
    {
        return conditions.GetDensityFilterMode();
    }
    static QVPhysicalFilterTYPE GetPhysicalFilter(const QVMeasureConditions& conditions)
    {
        return conditions.GetPhysicalFilter();
    }
    static void SetIllumination(QVMeasureConditions& conditions, const QVIllumination& illumination)
    {
        conditions.SetIllumination(illumination);
    }
    static void SetObserver(QVMeasureConditions& conditions, QVObserverTYPE observer)
    {
        conditions.SetObserver(observer);
    }
    static void SetWhiteBase(QVMeasureConditions& conditions, QVWhiteBaseTYPE whiteBase)
    {
        conditions.SetWhiteBase(whiteBase);
    }
    // The custom-conditions map itself, "CustomCondition" entry included.
    static const Utilities::Map<Utilities::String, Utilities::String>&
    CustomConditions(const QVMeasureConditions& conditions)
    {
        return conditions.customConditions;
    }
    // The static table of supported values and element names.
    static const Utilities::Map<Utilities::String, Utilities::Vector<Utilities::String>>& SupportedValuesTable()
    {
        return QVMeasureConditions::SupportedValuesTable();
    }

    // ------------------------------------------------------------ QVSpectrum

    static unsigned short GetArrayIndex(const QVSpectrum& spectrum, unsigned short wavelength)
    {
        return spectrum.GetArrayIndex(wavelength);
    }
    static unsigned short GetWaveLength(const QVSpectrum& spectrum, unsigned short index)
    {
        return spectrum.GetWaveLength(index);
    }
    static unsigned short GetNrOfDataPoints(const QVSpectrum& spectrum) { return spectrum.GetNrOfDataPoints(); }
    static QVMeasureConditions GetPhysMeasCond(const QVSpectrum& spectrum) { return spectrum.GetPhysMeasCond(); }
    static void SetMeasureConditions(QVSpectrum& spectrum, const QVMeasureConditions& conditions)
    {
        spectrum.SetMeasureConditions(conditions);
    }

    // ------------------------------------------------------------ QVColorVector

    static void SetMeasureConditions(QVColorVector& vector, const QVMeasureConditions& conditions)
    {
        vector.SetMeasureConditions(conditions);
    }
    static void SetMeasureConditions(QVColorVector& vector, const QVMeasureConditions& physical,
                                     const QVMeasureConditions& conditions)
    {
        vector.SetMeasureConditions(physical, conditions);
    }
};

} // namespace CMetry

#endif
