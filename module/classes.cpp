// The creatable classes of the main module.
#include "collection/collection.h"
#include "com/module.h"
#include "compound/compound.h"
#include "phase/phase.h"
#include "phase/phase_collection.h"

namespace qs {
namespace {

ClassObject classObjects[] = {
    ClassObject({&__uuidof(::COQSCompound), 103, OLESTR("COQSCompound.COQSCompound"), OLESTR("COQSCompound Class"),
                 COQSCompound::create}),
    ClassObject({&__uuidof(::COQSCompoundCollection), 104, OLESTR("COQSCompoundCollection.COQSCompoundCollection"),
                 OLESTR("COQSCompoundCollection Class"), COQSCompoundCollection::create}),
    ClassObject(
        {&__uuidof(::COQSPhase), 101, OLESTR("COQSPhase.COQSPhase"), OLESTR("COQSPhase Class"), COQSPhase::create}),
    ClassObject({&__uuidof(::COQSPhaseCollection), 102, OLESTR("COQSPhaseCollection.COQSPhaseCollection"),
                 OLESTR("COQSPhaseCollection Class"), COQSPhaseCollection::create}),
};

}  // namespace

std::span<ClassObject> moduleClasses() { return classObjects; }

const bool moduleRegistersTypeLibrary = true;

}  // namespace qs
