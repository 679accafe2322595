#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# plot-benchmarks.sh: redraws the charts of docs/performance.md (docs/img/*.png)
# from the figures kept in docs/data/*.dat. The PNGs are committed; run this
# after changing a .dat file. Needs gnuplot: apt-get install gnuplot-nox
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
data=$root/docs/data
img=$root/docs/img
mkdir -p "$img"

gnuplot <<GP
set terminal pngcairo size 1100,640 font "DejaVu Sans,10" noenhanced
set datafile separator whitespace
set style fill solid 0.8 border -1
set boxwidth 0.6
set grid ytics
set key top left

set output "$img/time-ratios.png"
set title "Time relative to the peer (lower is better; dash = target)"
set ylabel "time ratio (library / peer)"
set yrange [0:2.2]
set xtics rotate by -40 left
set bmargin 15
set rmargin 24
plot "$data/time-ratios.dat" using 0:(\$2 > \$3 ? \$2 : 1/0):xtic(1) with boxes lc rgb "#d62728" title "misses target", \
     "" using 0:(\$2 <= \$3 ? \$2 : 1/0) with boxes lc rgb "#1f77b4" title "meets target", \
     "" using (\$0-0.4):3:(0.8):(0) with vectors nohead lw 3 lc rgb "black" title "target", \
     1 with lines dt 2 lc rgb "gray40" title "as fast as the peer"

set output "$img/speedups.png"
set title "Speed-up over the peer (higher is better; dash = target)"
set ylabel "times faster than the peer (log scale)"
set logscale y
set yrange [0.8:150]
plot "$data/speedups.dat" using 0:2:xtic(1) with boxes lc rgb "#2ca02c" title "measured", \
     "" using (\$0-0.4):3:(0.8):(0) with vectors nohead lw 3 lc rgb "black" title "target"
unset logscale y

set output "$img/string-sizes.png"
set title "I18NString conversions vs u_strFromUTF8 / u_strToUTF8 into a reused buffer (higher is better)"
set ylabel "speed relative to ICU"
set yrange [0:1.5]
set xtics norotate
set bmargin 3
set rmargin 3
set style data histograms
set style histogram clustered gap 1
set boxwidth 0.9
plot "$data/string-sizes.dat" using 2:xtic(1) title "mixed UTF-8 -> I18NString vs u_strFromUTF8" lc rgb "#ff7f0e", \
     "" using 3 title "I18NString -> UTF-8 vs u_strToUTF8" lc rgb "#9467bd", \
     1 with lines dt 2 lw 2 lc rgb "black" title "target"
GP
echo "wrote $img/time-ratios.png $img/speedups.png $img/string-sizes.png"
