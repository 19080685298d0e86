// The creatable classes of the main module.
#include "collection/collection.h"
#include "com/module.h"
#include "compound/compound.h"

namespace qs {
namespace {

ClassObject classObjects[] = {
    ClassObject({&__uuidof(::COQSCompound), 103, OLESTR("COQSCompound.COQSCompound"), OLESTR("COQSCompound Class"),
                 COQSCompound::create}),
    ClassObject({&__uuidof(::COQSCompoundCollection), 104, OLESTR("COQSCompoundCollection.COQSCompoundCollection"),
                 OLESTR("COQSCompoundCollection Class"), COQSCompoundCollection::create}),
};

}  // namespace

std::span<ClassObject> moduleClasses() { return classObjects; }

const bool moduleRegistersTypeLibrary = true;

}  // namespace qs
