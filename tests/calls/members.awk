# Every interface of the generated header and its members, as lines of a .def file:
#   INTERFACE_BEGIN(IOne)
#   MEMBER(IOne, get_Name, (LONG a1, BSTR* a2), (a1, a2))
#   INTERFACE_END(IOne)
# Those named *Arrays are left out: nothing can make up the buffers that their arguments say.
/^MIDL_INTERFACE/ { named = 1; next }
named && /^[A-Za-z0-9_]+Arrays : public/ { named = 0 }
named && match($0, /^[A-Za-z0-9_]+ : public/) {
  face = $1
  print "INTERFACE_BEGIN(" face ")"
}
named && /^};/ { print "INTERFACE_END(" face ")" }
/^};/ || /^#/ { named = 0 }
named && /virtual HRESULT/ {
  member = $4
  sub(/\(.*/, "", member)
  parameters = arguments = ""
  count = 0
  sub(/.*\(/, "")
}
named && member {
  if (match($0, /[A-Za-z0-9_]+ \**[A-Za-z0-9_]+[,)]/)) {
    type = substr($0, RSTART, RLENGTH - 1)
    sub(/[A-Za-z0-9_]+$/, "", type)
    divider = count++ ? ", " : ""
    parameters = parameters divider type "a" count
    arguments = arguments divider "a" count
  }
  if (/= 0;/) {
    print "MEMBER(" face ", " member ", (" parameters "), (" arguments "))"
    member = ""
  }
}
