#!/usr/bin/python3
"""The peer detector (OpenCV's mcc module) on one image, as a whole process,
for the side-by-side speed comparison with `colcal find-chart`. Not used by
the plug-in. Prints whether a 24-patch chart was found and its box."""
import sys

import cv2


def main():
    if len(sys.argv) != 2:
        print("usage: peer_mcc_find.py IMAGE", file=sys.stderr)
        return 2
    image = cv2.imread(sys.argv[1], cv2.IMREAD_COLOR)
    if image is None:
        print(f"{sys.argv[1]}: cannot read image", file=sys.stderr)
        return 2
    detector = cv2.mcc.CCheckerDetector_create()
    if not detector.process(image, cv2.mcc.MCC24, 1):
        print("no chart found")
        return 1
    box = detector.getBestColorChecker().getBox()
    print("chart found", " ".join(f"{p[0]:.1f},{p[1]:.1f}" for p in box))
    return 0


if __name__ == "__main__":
    sys.exit(main())
