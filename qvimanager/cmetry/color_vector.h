#ifndef QVIMANAGER_CMETRY_COLOR_VECTOR_H
#define QVIMANAGER_CMETRY_COLOR_VECTOR_H

// QVColorVector: the result of every colorimetric evaluation, up to four
// numbers and the conditions under which they hold. The vector knows no
// colour science: the colour space ("ColorSpaceDescription.Type"), the
// names of the components (QVMeasureConditions::GetElementName) and whether
// they are coordinates or differences ("ColorSpaceDescription.
// AbsoluteOrDeltaVector") all come from the conditions it carries.
// Component 3 belongs to CMYK and is 0 in a vector built from three values.
//
// QVXYZ, QVLab, QVLCh and QVLuv are named forms of the same vector with no
// data of their own.

#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/diagnostics/diagnostic_string.h"

namespace CMetry {

class QVColorVector {
public:
    // All components 0, default conditions ("CIELab", "AbsoluteVector").
    QVColorVector();
    // Component 3 is 0.
    QVColorVector(float first, float second, float third, const QVMeasureConditions& conditions);
    QVColorVector(const QVColorVector& other);
    // Copies the four components, then the conditions. Self-assignment does
    // nothing.
    QVColorVector& operator=(const QVColorVector& other);
    ~QVColorVector();

    // Components 0 to 3 exactly, then the conditions; no tolerance.
    bool operator==(const QVColorVector& other) const;

    // The component at `axis`. An axis outside 0 to 3 raises
    // ExceptionOutOfBound with "QVColorVector::operator[]: axis out of range"
    // instead of reaching outside the components.
    float& operator[](short axis);
    const float& operator[](short axis) const;

    // Component by component in single precision. The conditions stay as
    // they are: a difference does not become a "DeltaVector" by itself.
    void operator-=(const QVColorVector& other);
    void operator*=(const QVColorVector& other);

    // The square root (in double precision) of the sum of the squares of all
    // four components, the sum accumulated in single precision.
    float Length() const;

    const QVMeasureConditions& GetMeasureConditions() const;

    void Invariant() const {}
    // The empty text.
    Diagnostics::String GetValueString() const;

private:
    friend class TestAccess;
    friend class BaseCalculator;
    friend class CMetryCalculator;
    friend class CMetryService;
    friend class ColorTemperature;
    friend class Lab2Spec;

    void SetMeasureConditions(const QVMeasureConditions& conditions);
    // The conditions of the second argument with the physical filter of the
    // first: a computed vector keeps the filter its spectrum was measured
    // with under the evaluation conditions asked for.
    void SetMeasureConditions(const QVMeasureConditions& physical, const QVMeasureConditions& conditions);

    float components[4];
    QVMeasureConditions conditions;
};

// The copy constructors of the named forms default-construct the base and
// then assign from the source.

class QVXYZ : public QVColorVector {
public:
    QVXYZ();
    QVXYZ(const QVXYZ& other);
    QVXYZ& operator=(const QVXYZ& other) = default;
    // "QVXYZ".
    Diagnostics::String GetValueString() const;
};

class QVLab : public QVColorVector {
public:
    QVLab();
    QVLab(const QVLab& other);
    QVLab& operator=(const QVLab& other) = default;
    ~QVLab();
    // Assigns the base part; returns the base.
    QVColorVector& operator=(const QVColorVector& other);
};

class QVLCh : public QVColorVector {
public:
    QVLCh();
    QVLCh(const QVLCh& other);
    QVLCh& operator=(const QVLCh& other) = default;
};

class QVLuv : public QVColorVector {
public:
    QVLuv();
    QVLuv(const QVLuv& other);
    QVLuv& operator=(const QVLuv& other) = default;
    // "QVLuv".
    Diagnostics::String GetValueString() const;
};

} // namespace CMetry

#endif
