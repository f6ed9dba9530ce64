#ifndef QVIMANAGER_INSTRUMENTS_INTERFACES_MEASUREMENT_V1_H
#define QVIMANAGER_INSTRUMENTS_INTERFACES_MEASUREMENT_V1_H

// Measurement_V1: the sub-interface that an instrument's QVIInstrument hands
// out for GetInterface("Measurement_V1"): taking a reading. It is this
// library's own extension beside the other instrument interfaces: the
// instrument manager and InstrumentEvents_V1 do not use it; applications
// ask an instrument for it. A driver that cannot measure returns an empty
// pointer for the name.
//
// The virtual operations stand in their slot order, directly behind those
// of Component: drivers rely on it, so do not reorder them; a later
// operation is added behind the last one.
//
// Component is a virtual base: one class may implement several of these
// interfaces (an instrument that is also InstrumentButtons_V1, which
// InstrumentEvents_V1 needs, or its own FindDevices_V1) and its objects are
// still one Component each, made, counted and released once. Cast between
// the interfaces with DynamicCast, never with static_cast.

#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/components/component.h"

namespace QVIManager {

class Measurement_V1 : public virtual Utilities::Component {
public:
    // Slot 1. Takes one reading of the device the instrument serves (the
    // device of SetParameters, opened by Connect) and returns its
    // reflectance on the library's grid (36 values, 380 nm to 730 nm in
    // 10 nm steps) as factors 0..1, not percent. A device that is not
    // connected, or cannot be reached, raises ExceptionQVIModule ("Error in
    // <module>: <detail>").
    virtual CMetry::QVSpectrum Measure() = 0;
};

} // namespace QVIManager

#endif
