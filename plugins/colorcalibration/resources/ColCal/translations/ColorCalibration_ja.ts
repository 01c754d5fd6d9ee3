<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja_JP">
<context>
    <name>ColorCalibration</name>
    <message>
        <source>kalto Color Calibrator</source>
        <translation>kalto カラーキャリブレーター</translation>
    </message>
</context>
</TS>
