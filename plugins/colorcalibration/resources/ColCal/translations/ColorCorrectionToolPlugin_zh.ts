<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>CalibrationResult</name>
    <message>
        <source>Colors</source>
        <translation>颜色</translation>
    </message>
    <message>
        <source>Black Level</source>
        <translation>黑电平</translation>
    </message>
    <message>
        <source>White Balance</source>
        <translation>白平衡</translation>
    </message>
    <message>
        <source>Color Transformation</source>
        <translation>颜色变换</translation>
    </message>
    <message>
        <source>Color Adjustment Hue</source>
        <translation>颜色调整 色调</translation>
    </message>
    <message>
        <source>Color Adjustment Saturation</source>
        <translation>颜色调整 饱和度</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>伽马</translation>
    </message>
    <message>
        <source>Hue, Saturation, Brightness, Contrast</source>
        <translation>色调、饱和度、亮度、对比度</translation>
    </message>
    <message>
        <source>LUT</source>
        <translation>LUT</translation>
    </message>
    <message>
        <source>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</source>
        <translation>为使用颜色校准器，必须禁用 LUT。同时使用 LUT 和颜色校准器会对颜色校准产生不利影响。</translation>
    </message>
    <message>
        <source>Patches</source>
        <translation>色块</translation>
    </message>
    <message>
        <source>Colour error</source>
        <translation>色差</translation>
    </message>
    <message>
        <source>Colour error against the published chart values</source>
        <translation>相对于已公布色卡值的色差</translation>
    </message>
    <message>
        <source>Each patch: target (top), before (bottom left), after (bottom right)</source>
        <translation>每个色块：目标（上），校准前（左下），校准后（右下）</translation>
    </message>
    <message>
        <source>dE00 per patch</source>
        <translation>每个色块的 dE00</translation>
    </message>
    <message>
        <source>before (camera as found), mean %1</source>
        <translation>校准前（相机原状），平均 %1</translation>
    </message>
    <message>
        <source>after, mean %1</source>
        <translation>校准后，平均 %1</translation>
    </message>
    <message>
        <source>dE00 per patch against the published chart values (D50, %1 chart; measured colours adapted from D65 by Bradford)</source>
        <translation>每个色块的 dE00，相对于已公布的色卡值（D50，%1 色卡；测量颜色经 Bradford 从 D65 转换到 D50）</translation>
    </message>
</context>
<context>
    <name>ColorCorrectionToolDlg</name>
    <message>
        <source>kalto Color Calibrator</source>
        <translation>kalto 颜色校准器</translation>
    </message>
    <message>
        <source>Image acquisition is slowed down by certain parameter settings in the camera, e.g., exposure time.</source>
        <translation>相机中的某些参数设置（例如曝光时间）减慢了图像采集速度。</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>颜色校准器</translation>
    </message>
    <message>
        <source>&lt;p&gt;The camera has been disconnected.&lt;br/&gt;Reconnect the camera to the computer and open it to continue using the Color Calibrator.&lt;/p&gt;</source>
        <translation>&lt;p&gt;相机已断开连接。&lt;br/&gt;请将相机重新连接到计算机并打开，以继续使用颜色校准器。&lt;/p&gt;</translation>
    </message>
</context>
<context>
    <name>LiveImage</name>
    <message>
        <source>Camera image</source>
        <translation>相机图像</translation>
    </message>
    <message>
        <source>Arrow keys move the grid</source>
        <translation>使用方向键移动网格</translation>
    </message>
</context>
<context>
    <name>MessageBox</name>
    <message>
        <source>Color Calibrator</source>
        <translation>颜色校准器</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>是</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>No</source>
        <translation>否</translation>
    </message>
</context>
<context>
    <name>Plugin::ColorCalibration::CColorCalibrationPlugin</name>
    <message>
        <source>Color Calibrator</source>
        <translation>颜色校准器</translation>
    </message>
    <message>
        <source>&lt;p&gt;To use the Color Calibrator, you have to stop continuous image acquisition as well as any recordings.&lt;p/&gt;Do you want to stop the camera and start using the Color Calibrator?</source>
        <translation>&lt;p&gt;要使用颜色校准器，必须停止连续图像采集以及所有录制。&lt;p/&gt;是否停止相机并开始使用颜色校准器？</translation>
    </message>
</context>
<context>
    <name>QMLExposureTime</name>
    <message>
        <source>Couldn't set exposureTime!&lt;br&gt;</source>
        <translation>无法设置曝光时间！&lt;br&gt;</translation>
    </message>
</context>
<context>
    <name>QMLGainvalue</name>
    <message>
        <source>Couldn't set gain value!&lt;br&gt;</source>
        <translation>无法设置增益值！&lt;br&gt;</translation>
    </message>
</context>
<context>
    <name>QmlDataModelInterface</name>
    <message>
        <source>Settings have been saved successfully in </source>
        <translation>设置已成功保存到 </translation>
    </message>
    <message>
        <source>Settings couldn’t be saved in </source>
        <translation>无法将设置保存到 </translation>
    </message>
    <message>
        <source>Settings were saved successfully in </source>
        <translation>设置已成功保存到 </translation>
    </message>
    <message>
        <source>Summary has been saved successfully in </source>
        <translation>摘要已成功保存到 </translation>
    </message>
    <message>
        <source>Summary couldn’t be saved in </source>
        <translation>无法将摘要保存到 </translation>
    </message>
</context>
<context>
    <name>ReportTable</name>
    <message>
        <source>Calibration Reports</source>
        <translation>校准报告</translation>
    </message>
</context>
<context>
    <name>SaveOption</name>
    <message>
        <source>Folder</source>
        <translation>文件夹</translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation>浏览...</translation>
    </message>
</context>
<context>
    <name>ShotControls</name>
    <message>
        <source>Continuous Shot</source>
        <translation>连续拍摄</translation>
    </message>
    <message>
        <source>Single Shot</source>
        <translation>单次拍摄</translation>
    </message>
</context>
<context>
    <name>Step1Position</name>
    <message>
        <source>To manually change the size and position of the grid, use the handles provided. The grid must be at least the same size as the color chart.&lt;br&gt;Click &lt;b&gt;Next&lt;/b&gt; to continue. The camera is then prepared for the calibration: its color settings are reset and the white balance is set on the gray patches of the chart.</source>
        <translation>要手动更改网格的大小和位置，请使用提供的控制点。网格必须至少与色卡一样大。&lt;br&gt;单击&lt;b&gt;下一步&lt;/b&gt;继续。随后将为校准准备相机：其颜色设置将被重置，并根据色卡的灰色色块设置白平衡。</translation>
    </message>
    <message>
        <source>Auto-position Grid</source>
        <translation>自动定位网格</translation>
    </message>
    <message>
        <source>Load camera settings</source>
        <translation>加载相机设置</translation>
    </message>
    <message>
        <source>Show Grid</source>
        <translation>显示网格</translation>
    </message>
    <message>
        <source>KaltoFeatureStream files (*.pfs )</source>
        <translation>KaltoFeatureStream 文件 (*.pfs )</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>颜色校准器</translation>
    </message>
    <message>
        <source>Grid could not be positioned automatically.</source>
        <translation>无法自动定位网格。</translation>
    </message>
</context>
<context>
    <name>Step2Brightness</name>
    <message>
        <source>Set the exposure time and the gain so that the gray patch is just right, or click Auto.</source>
        <translation>请设置曝光时间和增益，使灰色色块亮度恰到好处，或单击“自动”。</translation>
    </message>
    <message>
        <source>Exposure Time</source>
        <translation>曝光时间</translation>
    </message>
    <message>
        <source>Gain</source>
        <translation>增益</translation>
    </message>
    <message>
        <source>Auto</source>
        <translation>自动</translation>
    </message>
</context>
<context>
    <name>Step3Review</name>
    <message>
        <source>Point at a patch to compare its colors.</source>
        <translation>将指针指向色块即可比较其颜色。</translation>
    </message>
    <message>
        <source>1 - Target Value</source>
        <translation>1 - 目标值</translation>
    </message>
    <message>
        <source>2 - Original Value</source>
        <translation>2 - 原始值</translation>
    </message>
    <message>
        <source>3 - Current Value</source>
        <translation>3 - 当前值</translation>
    </message>
    <message>
        <source>Recalibrate Camera</source>
        <translation>重新校准相机</translation>
    </message>
    <message>
        <source>Calibration Reports</source>
        <translation>校准报告</translation>
    </message>
    <message>
        <source>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</source>
        <translation>为使用颜色校准器，必须禁用 LUT。同时使用 LUT 和颜色校准器会对颜色校准产生不利影响。</translation>
    </message>
</context>
<context>
    <name>Step4Save</name>
    <message>
        <source>None</source>
        <translation>无</translation>
    </message>
    <message>
        <source>Before Calibration</source>
        <translation>校准前</translation>
    </message>
    <message>
        <source>After Calibration</source>
        <translation>校准后</translation>
    </message>
    <message>
        <source>Save camera settings to file</source>
        <translation>将相机设置保存到文件</translation>
    </message>
    <message>
        <source>Save calibration summary</source>
        <translation>保存校准摘要</translation>
    </message>
    <message>
        <source>Save camera settings in user set</source>
        <translation>将相机设置保存到用户集</translation>
    </message>
    <message>
        <source>Save settings as default</source>
        <translation>将设置保存为默认值</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>保存</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>颜色校准器</translation>
    </message>
    <message>
        <source>The calibration results have been saved.</source>
        <translation>校准结果已保存。</translation>
    </message>
</context>
<context>
    <name>functions</name>
    <message>
        <source>Could not load previous settings.</source>
        <translation>无法加载先前的设置。</translation>
    </message>
    <message>
        <source>Unable to set neutral settings.</source>
        <translation>无法应用中性设置。</translation>
    </message>
    <message>
        <source>The calibration process failed because the image is either too bright or too dark. Adjust the brightness and try again.</source>
        <translation>由于图像过亮或过暗，校准过程失败。请调整亮度后重试。</translation>
    </message>
    <message>
        <source>No initial parameters (min, max, value) &lt;br&gt; for exposure time available.</source>
        <translation>没有可用的 &lt;br&gt; 曝光时间初始参数（最小值、最大值、当前值）。</translation>
    </message>
    <message>
        <source>No initial parameters (min, max, value) &lt;br&gt; for gain value available.</source>
        <translation>没有可用的 &lt;br&gt; 增益初始参数（最小值、最大值、当前值）。</translation>
    </message>
    <message>
        <source>Couldn't create a backup of the camera settings.</source>
        <translation>无法备份相机设置。</translation>
    </message>
    <message>
        <source>Couldn't store detected exposure and gain values.</source>
        <translation>无法保存检测到的曝光时间和增益值。</translation>
    </message>
    <message>
        <source>Couldn't restore preneutral camera settings.</source>
        <translation>无法恢复中性化之前的相机设置。</translation>
    </message>
    <message>
        <source>Couldn't restore detected exposure and gain values.</source>
        <translation>无法恢复检测到的曝光时间和增益值。</translation>
    </message>
    <message>
        <source>Couldn't apply initial camera image or set original patch color values.</source>
        <translation>无法应用相机初始图像或设置色块的原始颜色值。</translation>
    </message>
    <message>
        <source>Couldn't apply &lt;br&gt; initial values.</source>
        <translation>无法应用 &lt;br&gt; 初始值。</translation>
    </message>
    <message>
        <source>The image is too bright. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>图像过亮。请调整曝光时间和增益以获得最佳亮度。&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too dark. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>图像过暗。请调整曝光时间和增益以获得最佳亮度。&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too bright and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>图像过亮，校准失败。请调整曝光时间和增益以获得最佳亮度。&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too dark and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>图像过暗，校准失败。请调整曝光时间和增益以获得最佳亮度。&lt;br&gt;</translation>
    </message>
    <message>
        <source>Calibration process failed.&lt;br&gt;</source>
        <translation>校准过程失败。&lt;br&gt;</translation>
    </message>
    <message>
        <source>If you cancel the color calibration, any changes you made will be lost. The original settings will be restored. </source>
        <translation>如果取消颜色校准，您所做的所有更改都将丢失。原始设置将被恢复。</translation>
    </message>
    <message>
        <source>Do you really want to cancel?</source>
        <translation>确定要取消吗？</translation>
    </message>
    <message>
        <source>Just right</source>
        <translation>恰到好处</translation>
    </message>
    <message>
        <source>Too dark</source>
        <translation>过暗</translation>
    </message>
    <message>
        <source>Too bright</source>
        <translation>过亮</translation>
    </message>
    <message>
        <source>autoadjust error</source>
        <translation>自动调整错误</translation>
    </message>
    <message>
        <source>Autoadjust values &lt;br&gt; impossible!</source>
        <translation>无法 &lt;br&gt; 自动调整数值！</translation>
    </message>
    <message>
        <source>Unable to apply initial camera image and patch values.</source>
        <translation>无法应用相机初始图像和色块值。</translation>
    </message>
    <message>
        <source>Apply initial values failed.</source>
        <translation>应用初始值失败。</translation>
    </message>
    <message>
        <source>Calibration process failed.</source>
        <translation>校准过程失败。</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>颜色校准器</translation>
    </message>
    <message>
        <source>You haven’t selected any of the save options. To save settings or results, select one of the available options.&lt;br&gt;</source>
        <translation>您尚未选择任何保存选项。要保存设置或结果，请选择一个可用选项。&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't save settings to file path!&lt;br&gt;</source>
        <translation>无法将设置保存到文件路径！&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't save summary!&lt;br&gt;</source>
        <translation>无法保存摘要！&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't store settings in user set: </source>
        <translation>无法将设置保存到用户集: </translation>
    </message>
    <message>
        <source>Colors</source>
        <translation>颜色</translation>
    </message>
    <message>
        <source>Black Level</source>
        <translation>黑电平</translation>
    </message>
    <message>
        <source>White Balance</source>
        <translation>白平衡</translation>
    </message>
    <message>
        <source>Color Transformation</source>
        <translation>颜色变换</translation>
    </message>
    <message>
        <source>Color Adjustment Hue</source>
        <translation>颜色调整 色调</translation>
    </message>
    <message>
        <source>Color Adjustment Saturation</source>
        <translation>颜色调整 饱和度</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>伽马</translation>
    </message>
    <message>
        <source>Hue, Saturation, Brightness, Contrast</source>
        <translation>色调、饱和度、亮度、对比度</translation>
    </message>
    <message>
        <source>LUT</source>
        <translation>LUT</translation>
    </message>
    <message>
        <source>Original</source>
        <translation>原始</translation>
    </message>
    <message>
        <source>Target</source>
        <translation>目标</translation>
    </message>
    <message>
        <source>Current</source>
        <translation>当前</translation>
    </message>
    <message>
        <source>Delta E</source>
        <translation>Delta E</translation>
    </message>
    <message>
        <source>Delta C</source>
        <translation>Delta C</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Position Grid</source>
        <translation>定位网格</translation>
    </message>
    <message>
        <source>Adjust Brightness</source>
        <translation>调整亮度</translation>
    </message>
    <message>
        <source>Review Calibration Results</source>
        <translation>查看校准结果</translation>
    </message>
    <message>
        <source>Save Calibration Results</source>
        <translation>保存校准结果</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>颜色校准器</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>上一步</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>完成</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>下一步</translation>
    </message>
</context>
</TS>
