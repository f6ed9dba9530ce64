#ifndef QVIMANAGER_TESTS_CMETRY_TEST_ACCESS_H
#define QVIMANAGER_TESTS_CMETRY_TEST_ACCESS_H

// The one definition of CMetry::TestAccess, the friend through which tests
// reach the private members of the colorimetry classes. Every test file of
// the cmetry tests includes this header instead of defining its own, so the
// program holds a single definition of the class.

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/color_temperature.h"
#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/filter.h"
#include "qvimanager/cmetry/lab_to_spectrum.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/cmetry/weightfactors.h"
#include "qvimanager/density/density.h"
#include "qvimanager/density/density_calculator.h"
#include "qvimanager/density/density_service.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/string.h"

#include <vector>

namespace CMetry {

class TestAccess {
public:
    // ------------------------------------------------------------ QVDensity

    static bool IsValid(const QVDensity& density) { return density.IsValid(); }

    // The classes of static operations cannot be built by callers.
    static Diagnostics::String DensityCalculatorValueString() { return DensityCalculator().GetValueString(); }
    static Diagnostics::String DensityServiceValueString() { return DensityService().GetValueString(); }

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
    // The custom-conditions map the condition set holds, as the set itself
    // reports it.
    static const Utilities::Map<Utilities::String, Utilities::String>& CustomConditions(
        const QVMeasureConditions& conditions)
    {
        return conditions.GetCustomConditions();
    }
    // Whether the set still holds the shared initial map, that is, no custom
    // entry was written and it has no map of its own.
    static bool HoldsTheInitialCustomConditions(const QVMeasureConditions& conditions)
    {
        return &conditions.GetCustomConditions() == &QVMeasureConditions::InitialCustomConditions();
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

    // ------------------------------------------------------------ StandardFilter

    // Copies and assigns a filter with all fields 0 and no table (step 0).
    static void CopyEmptyStandardFilter()
    {
        const StandardFilter empty;
        const StandardFilter copy(empty);
    }
    static void AssignEmptyStandardFilter(StandardFilter& target)
    {
        const StandardFilter empty;
        target = empty;
    }
    // The fields of a fresh filter made by the private default constructor.
    static bool EmptyStandardFilterHasNothing()
    {
        const StandardFilter empty;
        return empty.GetStepSize() == 0 && empty.GetMinWavelength() == 0 && empty.GetMaxWavelength() == 0 &&
               empty.GetFilter() == nullptr;
    }

    // ------------------------------------------------------------ CMetryFilter

    static void SetMeasuringConditions(CMetryFilter& filter, const QVMeasureConditions& conditions)
    {
        filter.SetMeasuringConditions(conditions);
    }
    static void SetMeasuringConditions(CMetryFilter& filter, const QVIllumination& illumination,
                                       QVObserverTYPE observer)
    {
        filter.SetMeasuringConditions(illumination, observer);
    }
    static const QVIllumination& GetIllumination(CMetryFilter& filter)
    {
        return filter.GetIllumination();
    }
    static QVObserverTYPE GetObserver(CMetryFilter& filter)
    {
        return filter.GetObserver();
    }
    // The cached weight factors (null before the first evaluation): their
    // identity shows whether the cache rebuilt them.
    static const Weightfactors* CachedWeightfactors(const CMetryFilter& filter)
    {
        return filter.weightfactors.IsValid() ? &*filter.weightfactors : nullptr;
    }
    // The conditions the cache stands for (null before the first
    // evaluation).
    static const QVMeasureConditions* CachedConditions(const CMetryFilter& filter)
    {
        return filter.conditions.IsValid() ? &*filter.conditions : nullptr;
    }
    static unsigned long FilterCount(const CMetryFilter& filter)
    {
        return filter.filters.GetSize();
    }

    // ------------------------------------------------------------ calculators

    static void SetPaperWhite(const QVSample& sample)
    {
        BaseCalculator::SetPaperWhite(sample);
    }
    static void AddPaperWhite(const QVSample& sample)
    {
        BaseCalculator::AddPaperWhite(sample);
    }
    static void SetPaperWhitePointer(Utilities::SmartPointer<QVSample> sample)
    {
        BaseCalculator::SetPaperWhitePointer(sample);
    }
    static const QVSample& GetPaperWhite()
    {
        return BaseCalculator::GetPaperWhite();
    }
    static bool IsPaperWhiteValid(const QVMeasureConditions& conditions)
    {
        return BaseCalculator::IsPaperWhiteValid(conditions);
    }
    static bool GetSpecBasedToPapWhite(QVSpectrum& spectrum)
    {
        return BaseCalculator::GetSpecBasedToPapWhite(spectrum);
    }
    static bool GetSpecBasedToPapWhite(const QVMeasureConditions& conditions, float* values)
    {
        return BaseCalculator::GetSpecBasedToPapWhite(conditions, values);
    }
    static bool GetNormValence(const QVMeasureConditions& conditions, QVColorVector& out)
    {
        return CMetryCalculator::GetNormValence(conditions, out);
    }
    // The weight factors the shared filter holds now (null before the first
    // evaluation).
    static const Weightfactors* SharedWeightfactors()
    {
        return CachedWeightfactors(CMetryCalculator::asXYZFilter);
    }

    // ------------------------------------------------------------ ColorTemperature

    // The rounds of the last search.
    static int Rounds(const ColorTemperature& search)
    {
        return search.rounds;
    }
    // The end rule of the search, to be fed with brackets.
    using SearchEnd = ColorTemperature::SearchEnd;

    // ------------------------------------------------------------ Lab2Spec

    // The rounds of the last search.
    static int Rounds(const Lab2Spec& search)
    {
        return search.lastRounds;
    }

    // ------------------------------------------------------------ Weightfactors

    static void CheckInstrumentData(short points, short minimum, short maximum)
    {
        Weightfactors::CheckInstrumentData(points, minimum, maximum);
    }
    static const float* Illumination(const Weightfactors& factors)
    {
        return factors.illumination;
    }
    static const float* Observer(const Weightfactors& factors, int axis)
    {
        return factors.observer[axis];
    }
    static float KFactor(const Weightfactors& factors)
    {
        return factors.kFactor;
    }
    static bool Emission(const Weightfactors& factors)
    {
        return factors.emission;
    }
    static unsigned short InstrumentStep(const Weightfactors& factors)
    {
        return factors.instrumentStep;
    }
    // The protected steps, run on a copy of `factors`.
    static Weightfactors Copy(const Weightfactors& factors)
    {
        return factors;
    }
    static void BandpassCorrection(Weightfactors& factors)
    {
        factors.BandpassCorrection();
    }
    static void Round(Weightfactors& factors)
    {
        factors.Round();
    }
    // Lagrange coefficients as vectors: coefficient[node][r].
    static std::vector<std::vector<float>> Lagrange(Weightfactors& factors, int nodes, unsigned short step,
                                                    unsigned short offset)
    {
        float** c = nodes == 3 ? factors.GetLagrange2Coeff(step, offset) : factors.GetLagrange3Coeff(step, offset);
        std::vector<std::vector<float>> result(static_cast<std::size_t>(nodes));
        for (int node = 0; node < nodes; ++node) {
            result[static_cast<std::size_t>(node)].assign(c[node], c[node] + step);
        }
        Weightfactors::FreeCoefficients(c, static_cast<unsigned short>(nodes));
        return result;
    }
    static std::vector<float> AdjustIlluminationVector(Weightfactors& factors, const StandardFilter& table)
    {
        float* adjusted = factors.AdjustIlluminationVector(table);
        const std::vector<float> result(adjusted, adjusted + (780 - 360) / table.GetStepSize() + 1);
        delete[] adjusted;
        return result;
    }
    static std::vector<float> AdjustObserverVector(Weightfactors& factors, const StandardFilter& table)
    {
        float* adjusted = factors.AdjustObserverVector(table);
        const std::vector<float> result(adjusted, adjusted + 421);
        delete[] adjusted;
        return result;
    }
};

} // namespace CMetry

#endif
