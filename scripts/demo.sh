#!/bin/bash
# Builds Tarn and shows it at work on real data. The only command needed on a bare Debian 12, as root.
# Results and pictures go to out/.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
need_packages g++ cmake ninja-build libcli11-dev libopenblas-serial-dev gnuplot-nox

cmake -S . -B build/demo -G Ninja -DCMAKE_BUILD_TYPE=Release -DTARN_BUILD_TESTS=OFF >/dev/null
echo "Building (the first time takes a minute or two)"
cmake --build build/demo -- --quiet
mkdir -p out
export PATH=$PWD/build/demo/command:$PATH

heading() { if [ -t 1 ]; then printf "\n\033[1m%s\033[0m\n" "$1"; else printf "\n%s\n" "$1"; fi; }
show() { # show COMMAND: prints it, then runs it
  echo "\$ $1"
  eval "$1"
}

heading "1. Ozone in New York, summer of 1973: daily readings with real gaps"
echo "The logarithm of a column, beside the column itself; a missing reading (NA) stays missing."
show "tarn eval Ln --column Ozone --to csv -o out/ln-ozone.csv data/air-quality-new-york-1973.csv"
show "head -7 out/ln-ozone.csv"
awk -F, 'NR > 1 { if ($1 == "NA") gaps++; else { n++; x += $1; xx += $1*$1; xxx += $1*$1*$1; y += $2; yy += $2*$2; yyy += $2*$2*$2 } }
  function skewness(s1, s2, s3,   m, v) { m = s1/n; v = s2/n - m*m; return (s3/n - 3*m*s2/n + 2*m*m*m) / v^1.5 }
  END { printf "%d readings, %d gaps. Skewness of ozone %.2f, of its logarithm %.2f: the logarithm is nearer to symmetric.\n",
        n, gaps, skewness(x, xx, xxx), skewness(y, yy, yyy) }' out/ln-ozone.csv

heading "2. Carbon dioxide on Mauna Loa, 1959 to 1997"
echo "Growth at a steady rate is a straight line in the logarithm."
show "tarn eval Ln --column ppm -o out/ln-co2.txt data/co2-mauna-loa-1959-1997.csv"
tail -n +2 data/co2-mauna-loa-1959-1997.csv | cut -d, -f1,3 | tr , ' ' | paste -d' ' - out/ln-co2.txt >out/co2.txt
read -r intercept slope <<<"$(awk '{ n++; t = $1 - 1978; s += t; ss += t*t; y += $3; ty += t*$3 }
  END { b = (n*ty - s*y) / (n*ss - s*s); printf "%.17g %.17g\n", (y - b*s)/n, b }' out/co2.txt)"
awk -v a="$intercept" -v b="$slope" '{ printf "%.17g\n", a + b*($1 - 1978) }' out/co2.txt >out/co2-line.txt
echo "The least-squares line through the logarithms, taken back by Exp:"
show "tarn eval Exp -o out/co2-trend.txt out/co2-line.txt"
paste -d' ' out/co2.txt out/co2-trend.txt >out/co2-with-trend.txt
awk -v b="$slope" 'NR == 1 { first = $4 } { last = $4 }
  END { printf "Growth %.3f percent a year; the trend runs from %.1f ppm to %.1f ppm.\n", 100*b, first, last }' \
  out/co2-with-trend.txt

heading "3. Three accuracies"
echo "The same numbers in the classes LA (low), HA (high, the default) and EP (half the digits, fastest):"
for class in LA HA EP; do
  printf '%s  ' "$class"
  echo 2 10 0.999 | tarn eval Ln --class "$class" | paste -sd' '
done
echo "Exp after Ln over the CO2 readings, largest relative difference from the readings:"
for class in LA HA EP; do
  tarn eval Ln --class "$class" --column ppm data/co2-mauna-loa-1959-1997.csv |
    tarn eval Exp --class "$class" | paste -d' ' out/co2.txt - |
    awk -v class="$class" '{ d = $4/$2 - 1; if (d < 0) d = -d; if (d > most) most = d } END { printf "%s  %.1e\n", class, most }'
done

heading "4. What cannot be computed is told, with its line"
printf '2\n0\n-1\n' >out/bad.txt
show "tarn eval Ln out/bad.txt 2>&1"

heading "5. Summary statistics of the New York summer"
echo "Gaps are counted, and left out of their variable; matrices take the complete days."
show "tarn stats --column Ozone --column Solar.R --column Wind --column Temp --scatter out/air-quality.svg --histogram out/air-quality-histograms.svg data/air-quality-new-york-1973.csv"
echo "The same in blocks of a kilobyte, as for a file larger than memory: moments agree, quantiles come from a sketch."
show "tarn stats --column Ozone --column Temp --block 1000 --moments-only data/air-quality-new-york-1973.csv"

heading "6. A curve through the carbon dioxide readings"
echo "Monthly readings have no value between them; a spline has one, and its slope and integral besides."
show "tarn fit --x year --y ppm --kind akima --at 1997.5,1997.55,1997.6 --derivatives 0,1 --integrate 1996:1997 --picture out/co2-curve.svg data/co2-mauna-loa-1959-1997.csv"
mean=$(tarn fit --x year --y ppm --kind akima --integrate 1996:1997 data/co2-mauna-loa-1959-1997.csv | cut -f3)
readings=$(awk -F, '$1 >= 1996 && $1 < 1997 { n++; s += $3 } END { printf "%.2f", s/n }' data/co2-mauna-loa-1959-1997.csv)
echo "The integral over 1996 is the year's mean: $mean ppm. The mean of its twelve readings: $readings ppm."
echo "Kinds differ most where data bend: the year 1974 by four of them."
for kind in linear natural akima hyman; do
  printf '%-8s' "$kind"
  tarn fit --x year --y ppm --kind "$kind" --at 1974.3,1974.375,1974.45,1974.7 data/co2-mauna-loa-1959-1997.csv | cut -f2 | paste -sd' '
done

heading "7. The functions"
show "tarn list Ln"
echo "tarn list alone shows all of them."

gnuplot <<'GNUPLOT'
set terminal svg size 1000,760 font "sans,13" background "white"
set output "out/demo.svg"
set multiplot layout 2,2 title "Tarn: vector math on real data" font ",16"
set style fill solid 0.6 border -1
set datafile separator ","
set datafile missing "NA"
bin(x, w) = w*(floor(x/w) + 0.5)
set yrange [0:*]
set boxwidth 11
set xlabel "ozone (ppb)"; set ylabel "days"
plot "out/ln-ozone.csv" every ::1 using (bin($1, 12)):(1) smooth frequency with boxes notitle lc rgb "#4477aa"
set boxwidth 0.36
set xlabel "Ln(ozone)"
plot "out/ln-ozone.csv" every ::1 using (bin($2, 0.4)):(1) smooth frequency with boxes notitle lc rgb "#ee6677"
set datafile separator whitespace
set autoscale y
set xlabel "year"; set ylabel "CO2 (ppm)"; set key left top
plot "out/co2-with-trend.txt" using 1:2 with lines title "Mauna Loa" lc rgb "#4477aa", \
     "" using 1:4 with lines title "Exp of the line through Ln" lw 2 lc rgb "#ee6677"
set ylabel "reading / trend"
plot "out/co2-with-trend.txt" using 1:($2/$4) with lines notitle lc rgb "#228833"
unset multiplot
GNUPLOT
heading "Pictures: out/demo.svg, out/air-quality.svg, out/air-quality-histograms.svg, out/co2-curve.svg"
