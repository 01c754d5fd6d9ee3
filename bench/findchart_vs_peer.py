#!/usr/bin/python3
"""Whole-process time of `colcal find-chart` against the peer detector
(peer_mcc_find.py, OpenCV's mcc module) on the same photographs, run in turn
(A B A B ...) so that both see the same machine. Prints per photo the median
wall time of each and the median of the pair-by-pair ratios, then the median
over the photos. Usage: findchart_vs_peer.py COLCAL [RUNS] IMAGE..."""
import os
import statistics
import subprocess
import sys
import time

PEER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "peer_mcc_find.py")


def timed(command):
    start = time.perf_counter()
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return time.perf_counter() - start, done


def main():
    if len(sys.argv) < 3:
        print(__doc__, file=sys.stderr)
        return 2
    colcal = sys.argv[1]
    runs = int(sys.argv[2]) if sys.argv[2].isdigit() else 5
    images = sys.argv[3:] if sys.argv[2].isdigit() else sys.argv[2:]
    ours_all, peer_all, ratios_all = [], [], []
    print(f"{'photo':48} {'colcal ms':>10} {'peer ms':>10} {'ratio':>6}  colcal / peer result")
    for image in images:
        ours, peer, ratios = [], [], []
        found = ("", "")
        for _ in range(runs):
            a, done_a = timed([colcal, "find-chart", image])
            b, done_b = timed([sys.executable, PEER, image])
            ours.append(a)
            peer.append(b)
            ratios.append(a / b)
            found = ("found" if done_a.returncode == 0 else "none", "found" if done_b.returncode == 0 else "none")
        o, p, r = statistics.median(ours), statistics.median(peer), statistics.median(ratios)
        ours_all.append(o)
        peer_all.append(p)
        ratios_all.append(r)
        print(f"{os.path.basename(image):48} {o * 1e3:10.0f} {p * 1e3:10.0f} {r:6.2f}  {found[0]} / {found[1]}")
    print(f"{'median over the photos':48} {statistics.median(ours_all) * 1e3:10.0f} "
          f"{statistics.median(peer_all) * 1e3:10.0f} {statistics.median(ratios_all):6.2f}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
