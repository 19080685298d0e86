// The creatable classes of the host kit.
#include "com/module.h"
#include "hostkit/arrays.h"
#include "hostkit/class_ids.h"
#include "hostkit/joback_estimator.h"
#include "hostkit/json_loader.h"
#include "hostkit/phases.h"

namespace qs {
namespace {

ClassObject classObjects[] = {
    ClassObject({&__uuidof(::HostIntegerArray), 101, OLESTR("QsHostKit.IntegerArray"), OLESTR("IntegerArray Class"),
                 hostkit::IntegerArray::create}),
    ClassObject({&__uuidof(::HostRealArray), 102, OLESTR("QsHostKit.RealArray"), OLESTR("RealArray Class"),
                 hostkit::RealArray::create}),
    ClassObject({&__uuidof(::HostRealMatrix), 103, OLESTR("QsHostKit.RealMatrix"), OLESTR("RealMatrix Class"),
                 hostkit::RealMatrix::create}),
    ClassObject({&__uuidof(::JsonLoader), 104, OLESTR("QsHostKit.JsonLoader"), OLESTR("JsonLoader Class"),
                 hostkit::JsonLoader::create}),
    ClassObject({&__uuidof(::JobackEstimator), 105, OLESTR("QsHostKit.JobackEstimator"),
                 OLESTR("JobackEstimator Class"), hostkit::JobackEstimator::create}),
    ClassObject({&host::kPropertyRegistry, 106, OLESTR("QsHostKit.PropertyRegistry"), OLESTR("PropertyRegistry Class"),
                 hostkit::PropertyRegistry::create}),
    ClassObject({&host::kPhaseActivator, 107, OLESTR("QsHostKit.PhaseActivator"), OLESTR("PhaseActivator Class"),
                 hostkit::PhaseActivator::create}),
};

}  // namespace

std::span<ClassObject> moduleClasses() { return classObjects; }

// The type library is the main module's; the copy here serves the arrays' own late binding.
const bool moduleRegistersTypeLibrary = false;

}  // namespace qs
