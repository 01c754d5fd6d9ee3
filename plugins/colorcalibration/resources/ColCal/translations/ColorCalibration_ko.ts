<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ko_KR">
<context>
    <name>ColorCalibration</name>
    <message>
        <source>kalto Color Calibrator</source>
        <translation>kalto 컬러 캘리브레이터</translation>
    </message>
</context>
</TS>
