<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ko_KR">
<context>
    <name>CalibrationResult</name>
    <message>
        <source>Colors</source>
        <translation>색상</translation>
    </message>
    <message>
        <source>Black Level</source>
        <translation>블랙 레벨</translation>
    </message>
    <message>
        <source>White Balance</source>
        <translation>화이트 밸런스</translation>
    </message>
    <message>
        <source>Color Transformation</source>
        <translation>색 변환</translation>
    </message>
    <message>
        <source>Color Adjustment Hue</source>
        <translation>색상 조정 색조</translation>
    </message>
    <message>
        <source>Color Adjustment Saturation</source>
        <translation>색상 조정 채도</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>감마</translation>
    </message>
    <message>
        <source>Hue, Saturation, Brightness, Contrast</source>
        <translation>색조, 채도, 밝기, 대비</translation>
    </message>
    <message>
        <source>LUT</source>
        <translation>LUT</translation>
    </message>
    <message>
        <source>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</source>
        <translation>컬러 캘리브레이터를 사용하기 위해 LUT를 비활성화해야 했습니다. LUT와 컬러 캘리브레이터를 동시에 사용하면 컬러 캘리브레이션에 나쁜 영향을 줍니다.</translation>
    </message>
    <message>
        <source>Patches</source>
        <translation>패치</translation>
    </message>
    <message>
        <source>Colour error</source>
        <translation>색차</translation>
    </message>
    <message>
        <source>Colour error against the published chart values</source>
        <translation>공개된 차트 값 대비 색차</translation>
    </message>
    <message>
        <source>Each patch: target (top), before (bottom left), after (bottom right)</source>
        <translation>각 패치: 목표 (위), 보정 전 (왼쪽 아래), 보정 후 (오른쪽 아래)</translation>
    </message>
    <message>
        <source>dE00 per patch</source>
        <translation>패치별 dE00</translation>
    </message>
    <message>
        <source>before (camera as found), mean %1</source>
        <translation>보정 전 (원래 카메라), 평균 %1</translation>
    </message>
    <message>
        <source>after, mean %1</source>
        <translation>보정 후, 평균 %1</translation>
    </message>
    <message>
        <source>dE00 per patch against the published chart values (D50, %1 chart; measured colours adapted from D65 by Bradford)</source>
        <translation>패치별 dE00, 공개된 차트 값 대비 (D50, %1 차트, 측정 색상은 Bradford 방식으로 D65에서 D50으로 변환)</translation>
    </message>
</context>
<context>
    <name>ColorCorrectionToolDlg</name>
    <message>
        <source>kalto Color Calibrator</source>
        <translation>kalto 컬러 캘리브레이터</translation>
    </message>
    <message>
        <source>Image acquisition is slowed down by certain parameter settings in the camera, e.g., exposure time.</source>
        <translation>카메라의 특정 매개변수 설정(예: 노출 시간)으로 인해 이미지 수집이 느려졌습니다.</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>컬러 캘리브레이터</translation>
    </message>
    <message>
        <source>&lt;p&gt;The camera has been disconnected.&lt;br/&gt;Reconnect the camera to the computer and open it to continue using the Color Calibrator.&lt;/p&gt;</source>
        <translation>&lt;p&gt;카메라 연결이 끊어졌습니다.&lt;br/&gt;컬러 캘리브레이터를 계속 사용하려면 카메라를 컴퓨터에 다시 연결한 후 여십시오.&lt;/p&gt;</translation>
    </message>
</context>
<context>
    <name>LiveImage</name>
    <message>
        <source>Camera image</source>
        <translation>카메라 이미지</translation>
    </message>
    <message>
        <source>Arrow keys move the grid</source>
        <translation>화살표 키로 그리드를 이동합니다</translation>
    </message>
</context>
<context>
    <name>MessageBox</name>
    <message>
        <source>Color Calibrator</source>
        <translation>컬러 캘리브레이터</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>예</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>확인</translation>
    </message>
    <message>
        <source>No</source>
        <translation>아니요</translation>
    </message>
</context>
<context>
    <name>Plugin::ColorCalibration::CColorCalibrationPlugin</name>
    <message>
        <source>Color Calibrator</source>
        <translation>컬러 캘리브레이터</translation>
    </message>
    <message>
        <source>&lt;p&gt;To use the Color Calibrator, you have to stop continuous image acquisition as well as any recordings.&lt;p/&gt;Do you want to stop the camera and start using the Color Calibrator?</source>
        <translation>&lt;p&gt;컬러 캘리브레이터를 사용하려면 연속 이미지 수집과 모든 녹화를 중지해야 합니다.&lt;p/&gt;카메라를 중지하고 컬러 캘리브레이터를 시작하시겠습니까?</translation>
    </message>
</context>
<context>
    <name>QMLExposureTime</name>
    <message>
        <source>Couldn't set exposureTime!&lt;br&gt;</source>
        <translation>노출 시간을 설정할 수 없습니다!&lt;br&gt;</translation>
    </message>
</context>
<context>
    <name>QMLGainvalue</name>
    <message>
        <source>Couldn't set gain value!&lt;br&gt;</source>
        <translation>게인 값을 설정할 수 없습니다!&lt;br&gt;</translation>
    </message>
</context>
<context>
    <name>QmlDataModelInterface</name>
    <message>
        <source>Settings have been saved successfully in </source>
        <translation>설정이 다음 위치에 저장되었습니다: </translation>
    </message>
    <message>
        <source>Settings couldn’t be saved in </source>
        <translation>설정을 다음 위치에 저장할 수 없습니다: </translation>
    </message>
    <message>
        <source>Settings were saved successfully in </source>
        <translation>설정이 다음 사용자 세트에 저장되었습니다: </translation>
    </message>
    <message>
        <source>Summary has been saved successfully in </source>
        <translation>요약이 다음 위치에 저장되었습니다: </translation>
    </message>
    <message>
        <source>Summary couldn’t be saved in </source>
        <translation>요약을 다음 위치에 저장할 수 없습니다: </translation>
    </message>
</context>
<context>
    <name>ReportTable</name>
    <message>
        <source>Calibration Reports</source>
        <translation>캘리브레이션 보고서</translation>
    </message>
</context>
<context>
    <name>SaveOption</name>
    <message>
        <source>Folder</source>
        <translation>폴더</translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation>찾아보기...</translation>
    </message>
</context>
<context>
    <name>ShotControls</name>
    <message>
        <source>Continuous Shot</source>
        <translation>연속 촬영</translation>
    </message>
    <message>
        <source>Single Shot</source>
        <translation>단일 촬영</translation>
    </message>
</context>
<context>
    <name>Step1Position</name>
    <message>
        <source>To manually change the size and position of the grid, use the handles provided. The grid must be at least the same size as the color chart.&lt;br&gt;Click &lt;b&gt;Next&lt;/b&gt; to continue. The camera is then prepared for the calibration: its color settings are reset and the white balance is set on the gray patches of the chart.</source>
        <translation>그리드의 크기와 위치를 직접 변경하려면 제공된 핸들을 사용하십시오. 그리드는 컬러 차트보다 작아서는 안 됩니다.&lt;br&gt;계속하려면 &lt;b&gt;다음&lt;/b&gt;을 클릭하십시오. 그러면 카메라가 캘리브레이션을 준비합니다. 색상 설정이 초기화되고 차트의 회색 패치로 화이트 밸런스가 설정됩니다.</translation>
    </message>
    <message>
        <source>Auto-position Grid</source>
        <translation>그리드 자동 배치</translation>
    </message>
    <message>
        <source>Load camera settings</source>
        <translation>카메라 설정 불러오기</translation>
    </message>
    <message>
        <source>Show Grid</source>
        <translation>그리드 표시</translation>
    </message>
    <message>
        <source>KaltoFeatureStream files (*.pfs )</source>
        <translation>KaltoFeatureStream 파일 (*.pfs )</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>컬러 캘리브레이터</translation>
    </message>
    <message>
        <source>Grid could not be positioned automatically.</source>
        <translation>그리드를 자동으로 배치할 수 없습니다.</translation>
    </message>
</context>
<context>
    <name>Step2Brightness</name>
    <message>
        <source>Set the exposure time and the gain so that the gray patch is just right, or click Auto.</source>
        <translation>회색 패치가 적당해지도록 노출 시간과 게인을 설정하거나 자동을 클릭하십시오.</translation>
    </message>
    <message>
        <source>Exposure Time</source>
        <translation>노출 시간</translation>
    </message>
    <message>
        <source>Gain</source>
        <translation>게인</translation>
    </message>
    <message>
        <source>Auto</source>
        <translation>자동</translation>
    </message>
</context>
<context>
    <name>Step3Review</name>
    <message>
        <source>Point at a patch to compare its colors.</source>
        <translation>패치를 가리키면 색상을 비교할 수 있습니다.</translation>
    </message>
    <message>
        <source>1 - Target Value</source>
        <translation>1 - 목표값</translation>
    </message>
    <message>
        <source>2 - Original Value</source>
        <translation>2 - 원래 값</translation>
    </message>
    <message>
        <source>3 - Current Value</source>
        <translation>3 - 현재 값</translation>
    </message>
    <message>
        <source>Recalibrate Camera</source>
        <translation>카메라 재캘리브레이션</translation>
    </message>
    <message>
        <source>Calibration Reports</source>
        <translation>캘리브레이션 보고서</translation>
    </message>
    <message>
        <source>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</source>
        <translation>컬러 캘리브레이터를 사용하기 위해 LUT를 비활성화해야 했습니다. LUT와 컬러 캘리브레이터를 동시에 사용하면 컬러 캘리브레이션에 나쁜 영향을 줍니다.</translation>
    </message>
</context>
<context>
    <name>Step4Save</name>
    <message>
        <source>None</source>
        <translation>없음</translation>
    </message>
    <message>
        <source>Before Calibration</source>
        <translation>캘리브레이션 전</translation>
    </message>
    <message>
        <source>After Calibration</source>
        <translation>캘리브레이션 후</translation>
    </message>
    <message>
        <source>Save camera settings to file</source>
        <translation>카메라 설정을 파일에 저장</translation>
    </message>
    <message>
        <source>Save calibration summary</source>
        <translation>캘리브레이션 요약 저장</translation>
    </message>
    <message>
        <source>Save camera settings in user set</source>
        <translation>카메라 설정을 사용자 세트에 저장</translation>
    </message>
    <message>
        <source>Save settings as default</source>
        <translation>설정을 기본값으로 저장</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>저장</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>컬러 캘리브레이터</translation>
    </message>
    <message>
        <source>The calibration results have been saved.</source>
        <translation>캘리브레이션 결과가 저장되었습니다.</translation>
    </message>
</context>
<context>
    <name>functions</name>
    <message>
        <source>Could not load previous settings.</source>
        <translation>이전 설정을 불러올 수 없습니다.</translation>
    </message>
    <message>
        <source>Unable to set neutral settings.</source>
        <translation>중립 설정을 적용할 수 없습니다.</translation>
    </message>
    <message>
        <source>The calibration process failed because the image is either too bright or too dark. Adjust the brightness and try again.</source>
        <translation>이미지가 너무 밝거나 너무 어두워 캘리브레이션 과정이 실패했습니다. 밝기를 조정한 후 다시 시도하십시오.</translation>
    </message>
    <message>
        <source>No initial parameters (min, max, value) &lt;br&gt; for exposure time available.</source>
        <translation>노출 시간에 대한 초기 매개변수(최소, 최대, 값)를 &lt;br&gt; 사용할 수 없습니다.</translation>
    </message>
    <message>
        <source>No initial parameters (min, max, value) &lt;br&gt; for gain value available.</source>
        <translation>게인 값에 대한 초기 매개변수(최소, 최대, 값)를 &lt;br&gt; 사용할 수 없습니다.</translation>
    </message>
    <message>
        <source>Couldn't create a backup of the camera settings.</source>
        <translation>카메라 설정을 백업할 수 없습니다.</translation>
    </message>
    <message>
        <source>Couldn't store detected exposure and gain values.</source>
        <translation>감지된 노출 시간과 게인 값을 저장할 수 없습니다.</translation>
    </message>
    <message>
        <source>Couldn't restore preneutral camera settings.</source>
        <translation>중립화 이전의 카메라 설정을 복원할 수 없습니다.</translation>
    </message>
    <message>
        <source>Couldn't restore detected exposure and gain values.</source>
        <translation>감지된 노출 시간과 게인 값을 복원할 수 없습니다.</translation>
    </message>
    <message>
        <source>Couldn't apply initial camera image or set original patch color values.</source>
        <translation>카메라 초기 이미지를 적용하거나 패치의 원래 색상 값을 설정할 수 없습니다.</translation>
    </message>
    <message>
        <source>Couldn't apply &lt;br&gt; initial values.</source>
        <translation>초기값을 &lt;br&gt; 적용할 수 없습니다.</translation>
    </message>
    <message>
        <source>The image is too bright. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>이미지가 너무 밝습니다. 최적의 밝기가 되도록 노출 시간과 게인을 조정하십시오.&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too dark. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>이미지가 너무 어둡습니다. 최적의 밝기가 되도록 노출 시간과 게인을 조정하십시오.&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too bright and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>이미지가 너무 밝아 캘리브레이션이 실패했습니다. 최적의 밝기가 되도록 노출 시간과 게인을 조정하십시오.&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too dark and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>이미지가 너무 어두워 캘리브레이션이 실패했습니다. 최적의 밝기가 되도록 노출 시간과 게인을 조정하십시오.&lt;br&gt;</translation>
    </message>
    <message>
        <source>Calibration process failed.&lt;br&gt;</source>
        <translation>캘리브레이션 과정이 실패했습니다.&lt;br&gt;</translation>
    </message>
    <message>
        <source>If you cancel the color calibration, any changes you made will be lost. The original settings will be restored. </source>
        <translation>컬러 캘리브레이션을 취소하면 변경한 내용이 모두 사라집니다. 원래 설정이 복원됩니다. </translation>
    </message>
    <message>
        <source>Do you really want to cancel?</source>
        <translation>정말 취소하시겠습니까?</translation>
    </message>
    <message>
        <source>Just right</source>
        <translation>적당함</translation>
    </message>
    <message>
        <source>Too dark</source>
        <translation>너무 어두움</translation>
    </message>
    <message>
        <source>Too bright</source>
        <translation>너무 밝음</translation>
    </message>
    <message>
        <source>autoadjust error</source>
        <translation>자동 조정 오류</translation>
    </message>
    <message>
        <source>Autoadjust values &lt;br&gt; impossible!</source>
        <translation>자동 조정을 &lt;br&gt; 할 수 없습니다!</translation>
    </message>
    <message>
        <source>Unable to apply initial camera image and patch values.</source>
        <translation>카메라 초기 이미지와 패치 값을 적용할 수 없습니다.</translation>
    </message>
    <message>
        <source>Apply initial values failed.</source>
        <translation>초기값을 적용하지 못했습니다.</translation>
    </message>
    <message>
        <source>Calibration process failed.</source>
        <translation>캘리브레이션 과정이 실패했습니다.</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>컬러 캘리브레이터</translation>
    </message>
    <message>
        <source>You haven’t selected any of the save options. To save settings or results, select one of the available options.&lt;br&gt;</source>
        <translation>저장 옵션을 선택하지 않았습니다. 설정이나 결과를 저장하려면 사용 가능한 옵션 중 하나를 선택하십시오.&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't save settings to file path!&lt;br&gt;</source>
        <translation>설정을 파일 경로에 저장할 수 없습니다!&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't save summary!&lt;br&gt;</source>
        <translation>요약을 저장할 수 없습니다!&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't store settings in user set: </source>
        <translation>설정을 사용자 세트에 저장할 수 없습니다: </translation>
    </message>
    <message>
        <source>Colors</source>
        <translation>색상</translation>
    </message>
    <message>
        <source>Black Level</source>
        <translation>블랙 레벨</translation>
    </message>
    <message>
        <source>White Balance</source>
        <translation>화이트 밸런스</translation>
    </message>
    <message>
        <source>Color Transformation</source>
        <translation>색 변환</translation>
    </message>
    <message>
        <source>Color Adjustment Hue</source>
        <translation>색상 조정 색조</translation>
    </message>
    <message>
        <source>Color Adjustment Saturation</source>
        <translation>색상 조정 채도</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>감마</translation>
    </message>
    <message>
        <source>Hue, Saturation, Brightness, Contrast</source>
        <translation>색조, 채도, 밝기, 대비</translation>
    </message>
    <message>
        <source>LUT</source>
        <translation>LUT</translation>
    </message>
    <message>
        <source>Original</source>
        <translation>원본</translation>
    </message>
    <message>
        <source>Target</source>
        <translation>목표</translation>
    </message>
    <message>
        <source>Current</source>
        <translation>현재</translation>
    </message>
    <message>
        <source>Delta E</source>
        <translation>델타 E</translation>
    </message>
    <message>
        <source>Delta C</source>
        <translation>델타 C</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Position Grid</source>
        <translation>그리드 배치</translation>
    </message>
    <message>
        <source>Adjust Brightness</source>
        <translation>밝기 조정</translation>
    </message>
    <message>
        <source>Review Calibration Results</source>
        <translation>캘리브레이션 결과 검토</translation>
    </message>
    <message>
        <source>Save Calibration Results</source>
        <translation>캘리브레이션 결과 저장</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>컬러 캘리브레이터</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>취소</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>뒤로</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>완료</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>다음</translation>
    </message>
</context>
</TS>
