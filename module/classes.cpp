// The creatable classes of the main module.
#include "com/module.h"
#include "compound/compound.h"

namespace qs {
namespace {

ClassObject classObjects[] = {
    ClassObject({&__uuidof(::COQSCompound), 103, OLESTR("COQSCompound.COQSCompound"), OLESTR("COQSCompound Class"),
                 COQSCompound::create}),
};

}  // namespace

std::span<ClassObject> moduleClasses() { return classObjects; }

const bool moduleRegistersTypeLibrary = true;

}  // namespace qs
