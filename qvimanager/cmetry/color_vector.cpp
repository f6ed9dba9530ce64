#include "qvimanager/cmetry/color_vector.h"

#include "qvimanager/foundation/exception.h"

#include <cmath>

namespace CMetry {

QVColorVector::QVColorVector() : components(), conditions() {}

QVColorVector::QVColorVector(float first, float second, float third, const QVMeasureConditions& measureConditions)
    : components{first, second, third, 0.0f}, conditions(measureConditions)
{
}

QVColorVector::QVColorVector(const QVColorVector& other) = default;

QVColorVector& QVColorVector::operator=(const QVColorVector& other)
{
    if (this != &other) {
        for (int axis = 0; axis < 4; ++axis) {
            components[axis] = other.components[axis];
        }
        conditions = other.conditions;
    }
    return *this;
}

QVColorVector::~QVColorVector() = default;

bool QVColorVector::operator==(const QVColorVector& other) const
{
    for (int axis = 0; axis < 4; ++axis) {
        if (!(components[axis] == other.components[axis])) {
            return false;
        }
    }
    return conditions == other.conditions;
}

float& QVColorVector::operator[](short axis)
{
    if (axis < 0 || axis > 3) {
        throw Utilities::ExceptionOutOfBound("QVColorVector::operator[]: axis out of range");
    }
    return components[axis];
}

const float& QVColorVector::operator[](short axis) const
{
    if (axis < 0 || axis > 3) {
        throw Utilities::ExceptionOutOfBound("QVColorVector::operator[]: axis out of range");
    }
    return components[axis];
}

void QVColorVector::operator-=(const QVColorVector& other)
{
    for (int axis = 0; axis < 4; ++axis) {
        components[axis] -= other.components[axis];
    }
}

void QVColorVector::operator*=(const QVColorVector& other)
{
    for (int axis = 0; axis < 4; ++axis) {
        components[axis] *= other.components[axis];
    }
}

float QVColorVector::Length() const
{
    float sumOfSquares = 0.0f;
    for (int axis = 0; axis < 4; ++axis) {
        sumOfSquares += components[axis] * components[axis];
    }
    return static_cast<float>(std::sqrt(static_cast<double>(sumOfSquares)));
}

const QVMeasureConditions& QVColorVector::GetMeasureConditions() const
{
    return conditions;
}

Diagnostics::String QVColorVector::GetValueString() const
{
    return Diagnostics::String();
}

void QVColorVector::SetMeasureConditions(const QVMeasureConditions& measureConditions)
{
    conditions = measureConditions;
}

void QVColorVector::SetMeasureConditions(const QVMeasureConditions& physical,
                                         const QVMeasureConditions& measureConditions)
{
    conditions = measureConditions;
    conditions.SetPhysMeasCond(physical);
}

QVXYZ::QVXYZ() = default;

QVXYZ::QVXYZ(const QVXYZ& other) : QVColorVector()
{
    QVColorVector::operator=(other);
}

Diagnostics::String QVXYZ::GetValueString() const
{
    return Diagnostics::String("QVXYZ");
}

QVLab::QVLab() = default;

QVLab::QVLab(const QVLab& other) : QVColorVector()
{
    QVColorVector::operator=(other);
}

QVLab::~QVLab() = default;

QVColorVector& QVLab::operator=(const QVColorVector& other)
{
    return QVColorVector::operator=(other);
}

QVLCh::QVLCh() = default;

QVLCh::QVLCh(const QVLCh& other) : QVColorVector()
{
    QVColorVector::operator=(other);
}

QVLuv::QVLuv() = default;

QVLuv::QVLuv(const QVLuv& other) : QVColorVector()
{
    QVColorVector::operator=(other);
}

Diagnostics::String QVLuv::GetValueString() const
{
    return Diagnostics::String("QVLuv");
}

} // namespace CMetry
