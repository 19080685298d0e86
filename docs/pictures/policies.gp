# Draws how each policy continues a correlation. From the repository's root, after ./demo:
#   gnuplot docs/pictures/policies.gp
set terminal svg size 640,400 font "sans-serif,13" background "white"
set datafile missing "-"
set grid lc rgb "#dddddd"
set key samplen 2 Left reverse
array names = ["as the form goes on", "not set outside", "value at limit", "tangent", "tangent in ln Y over 1/T", \
               "tangent to critical"]
array colours = ["#888888", "#000000", "#d55e00", "#0072b2", "#009e73", "#cc79a7"]
array dashes = [4, 1, 1, 1, 1, 2]
# All policies agree inside the range; the curve is drawn once there.
beyond(T, y) = T > tmin + step && T < tmax - step ? NaN : y
rows(arguments) = "< build/native/bin/evaluation build/database " . arguments

set output "docs/pictures/vapour_pressure.svg"
set title "Vapour pressure of benzene; data from 272.04 to 562.05 K"
tmin = 272.04; tmax = 562.05; step = 6.8
set xlabel "1000 / T, 1/K"
set ylabel "kPa"
set logscale y
set mytics 1
set key top right
set xrange [1.1:4.6]
set yrange [0.02:500000]
set format y "10^{%L}"
plot for [i = 1:6] rows("21 VP 220 900") every ::1 \
  using (1000 / $1):(i == 2 ? column(3) : beyond($1, column(i + 1))) with lines \
  lc rgb colours[i] dt dashes[i] lw (i == 2 ? 3 : 1.5) title names[i]

set output "docs/pictures/liquid_density.svg"
set title "Liquid density of methanol; data from 175.47 to 503.1 K"
tmin = 175.47; tmax = 503.1; step = 5
set xlabel "K"
set key bottom left
set xrange [100:600]
set ylabel "kg/m^3"
unset logscale
set yrange [0:1100]
set format y "%g"
plot for [i = 1:6] rows("29 LDN 100 600") every ::1 \
  using 1:(i == 2 ? column(3) : beyond($1, column(i + 1))) with lines \
  lc rgb colours[i] dt dashes[i] lw (i == 2 ? 3 : 1.5) title names[i]
