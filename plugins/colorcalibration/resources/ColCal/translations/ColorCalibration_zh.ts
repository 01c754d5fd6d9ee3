<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>ColorCalibration</name>
    <message>
        <source>kalto Color Calibrator</source>
        <translation>kalto 颜色校准器</translation>
    </message>
</context>
</TS>
