// What values of each key can be; docs/checks.md has the reasons.
#pragma once

#include "props/key_table.h"

namespace qs::bank {

// In the unit of the key; a value may be either.
struct Bounds {
  double lowest, highest;
};

// clang-format off
constexpr Bounds boundsOf(Key key) {
  switch (key) {
    case Key::MW: return {1.0, 1e6};
    case Key::TC: case Key::PRTC: case Key::PRSVTC: case Key::SRKTC: case Key::AltTC:
    case Key::NBP: case Key::MP: return {1.0, 10000.0};
    case Key::FP: return {50.0, 1000.0};
    case Key::AIT: return {250.0, 1500.0};
    case Key::PC: case Key::PRPC: case Key::PRSVPC: case Key::SRKPC: case Key::AltPC: return {20.0, 200000.0};
    case Key::VC: case Key::PRVC: case Key::PRSVVC: case Key::SRKVC: case Key::AltVC:
    case Key::COSTALDVCHAR: return {0.02, 20.0};
    case Key::ZC: case Key::AltZC: return {0.1, 0.4};
    case Key::ACEN: case Key::PRACEN: case Key::PRSVACEN: case Key::SRKACEN: case Key::COSTALDACEN:
    case Key::ChaoSeaderACEN: return {-1.0, 3.0};
    case Key::ChaoSeaderMVOL: case Key::ChienNullMVOL: case Key::WilsonMVOL: return {0.005, 10.0};
    case Key::PRPVOLT: case Key::PRSVPVOLT: case Key::SRKPVOLT: case Key::ChaoSeaderPVOLT:
    case Key::ChienNullPVOLT: return {-1.0, 1.0};
    case Key::SP: case Key::ChaoSeaderSOLP: case Key::ChienNullSOLP: return {30.0, 3000.0};
    case Key::PRMC: case Key::SRKMC: case Key::PRSVKAPPA: case Key::VirialSOLV: return {-10.0, 10.0};
    case Key::UNIQUACR: case Key::UNIQUACQ: return {0.1, 200.0};
    case Key::CavettParameter: case Key::WilsonKVAL: case Key::SepFactorBeta:
    case Key::THETAA: case Key::THETAB: case Key::THETAC: case Key::THETAD: return {-1e6, 1e6};
    case Key::SLDN: case Key::LDN: case Key::SDN: return {1.0, 25000.0};
    case Key::VDN: return {0.0, 10000.0};
    case Key::DM: return {0.0, 20.0};
    case Key::RG: return {0.0, 1e-8};
    case Key::RI: return {1.0, 3.0};
    case Key::SVEL: return {50.0, 20000.0};
    case Key::FLML: case Key::FLMU: case Key::SolidSphericity: case Key::SolidCarbon: case Key::SolidHydrogen:
    case Key::SolidNitrogen: case Key::SolidOxygen: case Key::SolidSulphur: case Key::SolidChlorine:
    case Key::SolidOther: return {0.0, 1.0};
    case Key::SolidAverageDiameter: return {1e-9, 1.0};
    case Key::SolidSurfaceArea: return {0.0, 1e7};
    case Key::VP: return {0.0, 200000.0};
    case Key::SUBP: return {0.0, 10000.0};
    case Key::HVP: return {0.0, 500000.0};
    case Key::HFUS: return {50.0, 500000.0};
    case Key::IGCP: case Key::VCP: return {20.0, 20000.0};
    case Key::LCP: return {5.0, 20000.0};
    case Key::SOLCP: return {0.0, 20000.0};
    case Key::SVR: return {-1000.0, 1.0};
    case Key::LVS: return {1e-6, 1e6};
    case Key::VVS: return {1e-7, 1e-3};
    case Key::KV1: case Key::KV2: return {1e-9, 100.0};
    case Key::LTC: return {0.005, 100.0};
    case Key::VTC: return {1e-4, 10.0};
    case Key::SOLTC: return {0.005, 5000.0};
    case Key::ST: case Key::IT: return {0.0, 3.0};
    case Key::LIQH: case Key::VAPH: case Key::SOLH: case Key::IGH: case Key::IGG: return {-1e7, 1e7};
    case Key::LIQS: case Key::VAPS: case Key::SOLS: case Key::EntropyGC: return {-20000.0, 20000.0};
    case Key::IGS: return {0.0, 20000.0};
    case Key::IGHF25: case Key::IGGF25: return {-1e7, 5e6};
    case Key::IGSF25: return {-20000.0, 1000.0};
    case Key::IGHC25: return {-1e8, 0.0};
  }
  return {};
}
// clang-format on

}  // namespace qs::bank
