// The creatable classes of the main module.
#include "collection/collection.h"
#include "com/module.h"
#include "compound/compound.h"
#include "phase/phase.h"
#include "phase/phase_collection.h"

namespace qs {
namespace {

ClassObject classObjects[] = {
#define QS_CLASS(name, script, program, description, implementation) \
  ClassObject({&__uuidof(::name), script, OLESTR(program), OLESTR(description), implementation::create}),
#include "module/classes.def"
#undef QS_CLASS
};

}  // namespace

std::span<ClassObject> moduleClasses() { return classObjects; }

const bool moduleRegistersTypeLibrary = true;

}  // namespace qs
