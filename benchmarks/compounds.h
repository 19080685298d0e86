// Compounds with one equation, for benchmarks on both systems.
#pragma once

#include <stdexcept>
#include <vector>

#include "com/bstr.h"
#include "com/host_arrays.h"
#include "hostkit/module_loader.h"

namespace qs::bench {

// Throws std::runtime_error when the class is not there.
template <class I>
ComPtr<I> newObject(REFCLSID clsid) {
  auto object = host::createInstance<I>(clsid);
  if (!object) throw std::runtime_error("a class of qscontainers cannot be created");
  return object;
}

// A compound with an equation under the key TC, from tMin to tMax in K.
inline ComPtr<IBasicCompound> compoundWith(LONG shape, const std::vector<double>& coefficients, double tMin,
                                           double tMax) {
  const auto parameters = newObject<IRealArrayDisp>(__uuidof(::HostRealArray));
  setElements<IRealArrayDisp, double>(parameters.get(), coefficients);
  auto compound = newObject<IBasicCompound>(__uuidof(::COQSCompound));
  check(ComPtr<ICompoundPropPut>::from(compound.get())
            ->SetEquationProperty(Bstr(OLESTR("TC")).get(), 1, static_cast<tagEquationShapeEnum>(shape), tMin, tMax,
                                  1e-5, 1e15, parameters.get()));
  return compound;
}

}  // namespace qs::bench
