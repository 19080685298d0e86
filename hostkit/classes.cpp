// The creatable classes of the host kit.
#include "com/module.h"
#include "hostkit/arrays.h"
#include "hostkit/attribute_set.h"
#include "hostkit/joback_estimator.h"
#include "hostkit/json_loader.h"
#include "hostkit/phases.h"
#include "hostkit/xml_parser.h"

namespace qs {
namespace {

ClassObject classObjects[] = {
#define QS_CLASS(name, script, program, description, implementation) \
  ClassObject({&__uuidof(::name), script, OLESTR(program), OLESTR(description), implementation::create}),
#include "hostkit/classes.def"
#undef QS_CLASS
};

}  // namespace

std::span<ClassObject> moduleClasses() { return classObjects; }

// The type library is the main module's; the copy here serves these classes' own late binding.
const bool moduleRegistersTypeLibrary = false;

}  // namespace qs
