<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>CalibrationResult</name>
    <message>
        <source>Colors</source>
        <translation>Colors</translation>
    </message>
    <message>
        <source>Black Level</source>
        <translation>Black Level</translation>
    </message>
    <message>
        <source>White Balance</source>
        <translation>White Balance</translation>
    </message>
    <message>
        <source>Color Transformation</source>
        <translation>Color Transformation</translation>
    </message>
    <message>
        <source>Color Adjustment Hue</source>
        <translation>Color Adjustment Hue</translation>
    </message>
    <message>
        <source>Color Adjustment Saturation</source>
        <translation>Color Adjustment Saturation</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>Gamma</translation>
    </message>
    <message>
        <source>Hue, Saturation, Brightness, Contrast</source>
        <translation>Hue, Saturation, Brightness, Contrast</translation>
    </message>
    <message>
        <source>LUT</source>
        <translation>LUT</translation>
    </message>
    <message>
        <source>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</source>
        <translation>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</translation>
    </message>
    <message>
        <source>Patches</source>
        <translation>Patches</translation>
    </message>
    <message>
        <source>Colour error</source>
        <translation>Colour error</translation>
    </message>
    <message>
        <source>Colour error against the published chart values</source>
        <translation>Colour error against the published chart values</translation>
    </message>
    <message>
        <source>Each patch: target (top), before (bottom left), after (bottom right)</source>
        <translation>Each patch: target (top), before (bottom left), after (bottom right)</translation>
    </message>
    <message>
        <source>dE00 per patch</source>
        <translation>dE00 per patch</translation>
    </message>
    <message>
        <source>before (camera as found), mean %1</source>
        <translation>before (camera as found), mean %1</translation>
    </message>
    <message>
        <source>after, mean %1</source>
        <translation>after, mean %1</translation>
    </message>
    <message>
        <source>dE00 per patch against the published chart values (D50, %1 chart; measured colours adapted from D65 by Bradford)</source>
        <translation>dE00 per patch against the published chart values (D50, %1 chart; measured colours adapted from D65 by Bradford)</translation>
    </message>
</context>
<context>
    <name>ColorCorrectionToolDlg</name>
    <message>
        <source>kalto Color Calibrator</source>
        <translation>kalto Color Calibrator</translation>
    </message>
    <message>
        <source>Image acquisition is slowed down by certain parameter settings in the camera, e.g., exposure time.</source>
        <translation>Image acquisition is slowed down by certain parameter settings in the camera, e.g., exposure time.</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>Color Calibrator</translation>
    </message>
    <message>
        <source>&lt;p&gt;The camera has been disconnected.&lt;br/&gt;Reconnect the camera to the computer and open it to continue using the Color Calibrator.&lt;/p&gt;</source>
        <translation>&lt;p&gt;The camera has been disconnected.&lt;br/&gt;Reconnect the camera to the computer and open it to continue using the Color Calibrator.&lt;/p&gt;</translation>
    </message>
</context>
<context>
    <name>LiveImage</name>
    <message>
        <source>Camera image</source>
        <translation>Camera image</translation>
    </message>
    <message>
        <source>Arrow keys move the grid</source>
        <translation>Arrow keys move the grid</translation>
    </message>
</context>
<context>
    <name>MessageBox</name>
    <message>
        <source>Color Calibrator</source>
        <translation>Color Calibrator</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Yes</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>No</source>
        <translation>No</translation>
    </message>
</context>
<context>
    <name>Plugin::ColorCalibration::CColorCalibrationPlugin</name>
    <message>
        <source>Color Calibrator</source>
        <translation>Color Calibrator</translation>
    </message>
    <message>
        <source>&lt;p&gt;To use the Color Calibrator, you have to stop continuous image acquisition as well as any recordings.&lt;p/&gt;Do you want to stop the camera and start using the Color Calibrator?</source>
        <translation>&lt;p&gt;To use the Color Calibrator, you have to stop continuous image acquisition as well as any recordings.&lt;p/&gt;Do you want to stop the camera and start using the Color Calibrator?</translation>
    </message>
</context>
<context>
    <name>QMLExposureTime</name>
    <message>
        <source>Couldn't set exposureTime!&lt;br&gt;</source>
        <translation>Couldn't set exposureTime!&lt;br&gt;</translation>
    </message>
</context>
<context>
    <name>QMLGainvalue</name>
    <message>
        <source>Couldn't set gain value!&lt;br&gt;</source>
        <translation>Couldn't set gain value!&lt;br&gt;</translation>
    </message>
</context>
<context>
    <name>QmlDataModelInterface</name>
    <message>
        <source>Settings have been saved successfully in </source>
        <translation>Settings have been saved successfully in </translation>
    </message>
    <message>
        <source>Settings couldn’t be saved in </source>
        <translation>Settings couldn’t be saved in </translation>
    </message>
    <message>
        <source>Settings were saved successfully in </source>
        <translation>Settings were saved successfully in </translation>
    </message>
    <message>
        <source>Summary has been saved successfully in </source>
        <translation>Summary has been saved successfully in </translation>
    </message>
    <message>
        <source>Summary couldn’t be saved in </source>
        <translation>Summary couldn’t be saved in </translation>
    </message>
</context>
<context>
    <name>ReportTable</name>
    <message>
        <source>Calibration Reports</source>
        <translation>Calibration Reports</translation>
    </message>
</context>
<context>
    <name>SaveOption</name>
    <message>
        <source>Folder</source>
        <translation>Folder</translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation>Browse...</translation>
    </message>
</context>
<context>
    <name>ShotControls</name>
    <message>
        <source>Continuous Shot</source>
        <translation>Continuous Shot</translation>
    </message>
    <message>
        <source>Single Shot</source>
        <translation>Single Shot</translation>
    </message>
</context>
<context>
    <name>Step1Position</name>
    <message>
        <source>To manually change the size and position of the grid, use the handles provided. The grid must be at least the same size as the color chart.&lt;br&gt;Click &lt;b&gt;Next&lt;/b&gt; to continue. The camera is then prepared for the calibration: its color settings are reset and the white balance is set on the gray patches of the chart.</source>
        <translation>To manually change the size and position of the grid, use the handles provided. The grid must be at least the same size as the color chart.&lt;br&gt;Click &lt;b&gt;Next&lt;/b&gt; to continue. The camera is then prepared for the calibration: its color settings are reset and the white balance is set on the gray patches of the chart.</translation>
    </message>
    <message>
        <source>Auto-position Grid</source>
        <translation>Auto-position Grid</translation>
    </message>
    <message>
        <source>Load camera settings</source>
        <translation>Load camera settings</translation>
    </message>
    <message>
        <source>Show Grid</source>
        <translation>Show Grid</translation>
    </message>
    <message>
        <source>KaltoFeatureStream files (*.pfs )</source>
        <translation>KaltoFeatureStream files (*.pfs )</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>Color Calibrator</translation>
    </message>
    <message>
        <source>Grid could not be positioned automatically.</source>
        <translation>Grid could not be positioned automatically.</translation>
    </message>
</context>
<context>
    <name>Step2Brightness</name>
    <message>
        <source>Set the exposure time and the gain so that the gray patch is just right, or click Auto.</source>
        <translation>Set the exposure time and the gain so that the gray patch is just right, or click Auto.</translation>
    </message>
    <message>
        <source>Exposure Time</source>
        <translation>Exposure Time</translation>
    </message>
    <message>
        <source>Gain</source>
        <translation>Gain</translation>
    </message>
    <message>
        <source>Auto</source>
        <translation>Auto</translation>
    </message>
</context>
<context>
    <name>Step3Review</name>
    <message>
        <source>Point at a patch to compare its colors.</source>
        <translation>Point at a patch to compare its colors.</translation>
    </message>
    <message>
        <source>1 - Target Value</source>
        <translation>1 - Target Value</translation>
    </message>
    <message>
        <source>2 - Original Value</source>
        <translation>2 - Original Value</translation>
    </message>
    <message>
        <source>3 - Current Value</source>
        <translation>3 - Current Value</translation>
    </message>
    <message>
        <source>Recalibrate Camera</source>
        <translation>Recalibrate Camera</translation>
    </message>
    <message>
        <source>Calibration Reports</source>
        <translation>Calibration Reports</translation>
    </message>
    <message>
        <source>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</source>
        <translation>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</translation>
    </message>
</context>
<context>
    <name>Step4Save</name>
    <message>
        <source>None</source>
        <translation>None</translation>
    </message>
    <message>
        <source>Before Calibration</source>
        <translation>Before Calibration</translation>
    </message>
    <message>
        <source>After Calibration</source>
        <translation>After Calibration</translation>
    </message>
    <message>
        <source>Save camera settings to file</source>
        <translation>Save camera settings to file</translation>
    </message>
    <message>
        <source>Save calibration summary</source>
        <translation>Save calibration summary</translation>
    </message>
    <message>
        <source>Save camera settings in user set</source>
        <translation>Save camera settings in user set</translation>
    </message>
    <message>
        <source>Save settings as default</source>
        <translation>Save settings as default</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>Color Calibrator</translation>
    </message>
    <message>
        <source>The calibration results have been saved.</source>
        <translation>The calibration results have been saved.</translation>
    </message>
</context>
<context>
    <name>functions</name>
    <message>
        <source>Could not load previous settings.</source>
        <translation>Could not load previous settings.</translation>
    </message>
    <message>
        <source>Unable to set neutral settings.</source>
        <translation>Unable to set neutral settings.</translation>
    </message>
    <message>
        <source>The calibration process failed because the image is either too bright or too dark. Adjust the brightness and try again.</source>
        <translation>The calibration process failed because the image is either too bright or too dark. Adjust the brightness and try again.</translation>
    </message>
    <message>
        <source>No initial parameters (min, max, value) &lt;br&gt; for exposure time available.</source>
        <translation>No initial parameters (min, max, value) &lt;br&gt; for exposure time available.</translation>
    </message>
    <message>
        <source>No initial parameters (min, max, value) &lt;br&gt; for gain value available.</source>
        <translation>No initial parameters (min, max, value) &lt;br&gt; for gain value available.</translation>
    </message>
    <message>
        <source>Couldn't create a backup of the camera settings.</source>
        <translation>Couldn't create a backup of the camera settings.</translation>
    </message>
    <message>
        <source>Couldn't store detected exposure and gain values.</source>
        <translation>Couldn't store detected exposure and gain values.</translation>
    </message>
    <message>
        <source>Couldn't restore preneutral camera settings.</source>
        <translation>Couldn't restore preneutral camera settings.</translation>
    </message>
    <message>
        <source>Couldn't restore detected exposure and gain values.</source>
        <translation>Couldn't restore detected exposure and gain values.</translation>
    </message>
    <message>
        <source>Couldn't apply initial camera image or set original patch color values.</source>
        <translation>Couldn't apply initial camera image or set original patch color values.</translation>
    </message>
    <message>
        <source>Couldn't apply &lt;br&gt; initial values.</source>
        <translation>Couldn't apply &lt;br&gt; initial values.</translation>
    </message>
    <message>
        <source>The image is too bright. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>The image is too bright. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too dark. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>The image is too dark. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too bright and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>The image is too bright and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too dark and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>The image is too dark and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</translation>
    </message>
    <message>
        <source>Calibration process failed.&lt;br&gt;</source>
        <translation>Calibration process failed.&lt;br&gt;</translation>
    </message>
    <message>
        <source>If you cancel the color calibration, any changes you made will be lost. The original settings will be restored. </source>
        <translation>If you cancel the color calibration, any changes you made will be lost. The original settings will be restored. </translation>
    </message>
    <message>
        <source>Do you really want to cancel?</source>
        <translation>Do you really want to cancel?</translation>
    </message>
    <message>
        <source>Just right</source>
        <translation>Just right</translation>
    </message>
    <message>
        <source>Too dark</source>
        <translation>Too dark</translation>
    </message>
    <message>
        <source>Too bright</source>
        <translation>Too bright</translation>
    </message>
    <message>
        <source>autoadjust error</source>
        <translation>autoadjust error</translation>
    </message>
    <message>
        <source>Autoadjust values &lt;br&gt; impossible!</source>
        <translation>Autoadjust values &lt;br&gt; impossible!</translation>
    </message>
    <message>
        <source>Unable to apply initial camera image and patch values.</source>
        <translation>Unable to apply initial camera image and patch values.</translation>
    </message>
    <message>
        <source>Apply initial values failed.</source>
        <translation>Apply initial values failed.</translation>
    </message>
    <message>
        <source>Calibration process failed.</source>
        <translation>Calibration process failed.</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>Color Calibrator</translation>
    </message>
    <message>
        <source>You haven’t selected any of the save options. To save settings or results, select one of the available options.&lt;br&gt;</source>
        <translation>You haven’t selected any of the save options. To save settings or results, select one of the available options.&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't save settings to file path!&lt;br&gt;</source>
        <translation>Couldn't save settings to file path!&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't save summary!&lt;br&gt;</source>
        <translation>Couldn't save summary!&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't store settings in user set: </source>
        <translation>Couldn't store settings in user set: </translation>
    </message>
    <message>
        <source>Colors</source>
        <translation>Colors</translation>
    </message>
    <message>
        <source>Black Level</source>
        <translation>Black Level</translation>
    </message>
    <message>
        <source>White Balance</source>
        <translation>White Balance</translation>
    </message>
    <message>
        <source>Color Transformation</source>
        <translation>Color Transformation</translation>
    </message>
    <message>
        <source>Color Adjustment Hue</source>
        <translation>Color Adjustment Hue</translation>
    </message>
    <message>
        <source>Color Adjustment Saturation</source>
        <translation>Color Adjustment Saturation</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>Gamma</translation>
    </message>
    <message>
        <source>Hue, Saturation, Brightness, Contrast</source>
        <translation>Hue, Saturation, Brightness, Contrast</translation>
    </message>
    <message>
        <source>LUT</source>
        <translation>LUT</translation>
    </message>
    <message>
        <source>Original</source>
        <translation>Original</translation>
    </message>
    <message>
        <source>Target</source>
        <translation>Target</translation>
    </message>
    <message>
        <source>Current</source>
        <translation>Current</translation>
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
        <translation>Position Grid</translation>
    </message>
    <message>
        <source>Adjust Brightness</source>
        <translation>Adjust Brightness</translation>
    </message>
    <message>
        <source>Review Calibration Results</source>
        <translation>Review Calibration Results</translation>
    </message>
    <message>
        <source>Save Calibration Results</source>
        <translation>Save Calibration Results</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>Color Calibrator</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Back</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>Finish</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Next</translation>
    </message>
</context>
</TS>
