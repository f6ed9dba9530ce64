#ifndef QVIMANAGER_QVIMANAGER_H
#define QVIMANAGER_QVIMANAGER_H

// Umbrella header: every public header of the library.

#include "qvimanager/cmetry/ardo_cmm_screen.h"
#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/ciede2000.h"
#include "qvimanager/cmetry/cmetry_service.h"
#include "qvimanager/cmetry/color_temperature.h"
#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/cmetry/filter.h"
#include "qvimanager/cmetry/lab_to_spectrum.h"
#include "qvimanager/cmetry/linalg.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/cmetry/tables/cie_tables.h"
#include "qvimanager/cmetry/weightfactors.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/density/density.h"
#include "qvimanager/density/density_calculator.h"
#include "qvimanager/density/density_filter.h"
#include "qvimanager/density/density_service.h"
#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/diagnostic_vector.h"
#include "qvimanager/diagnostics/exception_diagnostic.h"
#include "qvimanager/diagnostics/memory_manager.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/basic_algorithm.h"
#include "qvimanager/foundation/class_name.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/language_service_interface.h"

#endif
