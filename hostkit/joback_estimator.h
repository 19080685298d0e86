// An estimator component: critical temperature (TC), pressure (PC) and volume (VC) from group contributions.
//
// K. G. Joback and R. C. Reid, Estimation of pure-component properties from group-contributions, Chem. Eng. Commun. 57
// (1987) 233-243. With the sums of contributions t, p and v over the groups, n atoms and the normal boiling point Tb:
//   Tc = Tb / (0.584 + 0.965 t - t^2)   in K
//   Pc = 1 / (0.113 + 0.0032 n - p)^2   in bar
//   Vc = 17.5 + v                       in cm3/mol
//   Tb = 198.2 + b                      in K, where the compound has no normal boiling point of its own
#pragma once

#include "automation/coclass.h"

namespace qs::hostkit {

// The groups come from the compound's UNIFAC groups, which do not show rings. The result is S_FALSE for a compound with
// a ring other than benzene's, with a group that has no counterpart, or without groups. PC is in kPa, VC in m3/kmol.
class JobackEstimator final : public Coclass<JobackEstimator, IPurePropEstimator, IValueSource> {
 public:
  STDMETHODIMP Get_SupportedPropList(INT index, BSTR* name) noexcept override;
  // The contributions are built in; the path is ignored.
  STDMETHODIMP Set_Path(BSTR path) noexcept override;
  STDMETHODIMP Estimate(IDispatch* compound, BSTR property, double* value) noexcept override;
  // The publication, for each property that can be estimated; key and identifier are ignored.
  STDMETHODIMP Get_ValueSource(BSTR searchKey, BSTR id, BSTR name, tagValueKindEnum* kind, tagValueQualityEnum* quality,
                               BSTR* title, BSTR* authors, INT* year, BSTR* licence, BSTR* changes, BSTR* uncertainty,
                               BSTR* note) noexcept override;
};

}  // namespace qs::hostkit
