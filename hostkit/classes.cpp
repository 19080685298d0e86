// The creatable classes of the host kit.
#include "com/module.h"
#include "hostkit/arrays.h"
#include "hostkit/attribute_set.h"
#include "hostkit/class_ids.h"
#include "hostkit/joback_estimator.h"
#include "hostkit/json_loader.h"
#include "hostkit/phases.h"
#include "hostkit/xml_parser.h"

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
    ClassObject({&__uuidof(::AttributeSet), 108, OLESTR("QsHostKit.AttributeSet"), OLESTR("AttributeSet Class"),
                 hostkit::AttributeSet::create}),
    ClassObject({&__uuidof(::XMLParser), 109, OLESTR("QsHostKit.XMLParser"), OLESTR("XMLParser Class"),
                 hostkit::XmlParser::create}),
};

}  // namespace

std::span<ClassObject> moduleClasses() { return classObjects; }

// The type library is the main module's; the copy here serves these classes' own late binding.
const bool moduleRegistersTypeLibrary = false;

}  // namespace qs
