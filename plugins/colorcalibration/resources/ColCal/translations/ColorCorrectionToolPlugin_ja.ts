<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja_JP">
<context>
    <name>CalibrationResult</name>
    <message>
        <source>Colors</source>
        <translation>色</translation>
    </message>
    <message>
        <source>Black Level</source>
        <translation>黒レベル</translation>
    </message>
    <message>
        <source>White Balance</source>
        <translation>ホワイトバランス</translation>
    </message>
    <message>
        <source>Color Transformation</source>
        <translation>色変換</translation>
    </message>
    <message>
        <source>Color Adjustment Hue</source>
        <translation>色調整 色相</translation>
    </message>
    <message>
        <source>Color Adjustment Saturation</source>
        <translation>色調整 彩度</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>ガンマ</translation>
    </message>
    <message>
        <source>Hue, Saturation, Brightness, Contrast</source>
        <translation>色相、彩度、明るさ、コントラスト</translation>
    </message>
    <message>
        <source>LUT</source>
        <translation>LUT</translation>
    </message>
    <message>
        <source>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</source>
        <translation>カラーキャリブレーターを使用するため、LUT を無効にする必要がありました。LUT とカラーキャリブレーターを同時に使用すると、カラーキャリブレーションに悪影響を及ぼします。</translation>
    </message>
    <message>
        <source>Patches</source>
        <translation>パッチ</translation>
    </message>
    <message>
        <source>Colour error</source>
        <translation>色差</translation>
    </message>
    <message>
        <source>Colour error against the published chart values</source>
        <translation>公表されたチャート値に対する色差</translation>
    </message>
    <message>
        <source>Each patch: target (top), before (bottom left), after (bottom right)</source>
        <translation>各パッチ: 目標 (上)、補正前 (左下)、補正後 (右下)</translation>
    </message>
    <message>
        <source>dE00 per patch</source>
        <translation>パッチごとの dE00</translation>
    </message>
    <message>
        <source>before (camera as found), mean %1</source>
        <translation>補正前 (元のカメラ)、平均 %1</translation>
    </message>
    <message>
        <source>after, mean %1</source>
        <translation>補正後、平均 %1</translation>
    </message>
    <message>
        <source>dE00 per patch against the published chart values (D50, %1 chart; measured colours adapted from D65 by Bradford)</source>
        <translation>パッチごとの dE00、公表されたチャート値に対して (D50、%1 のチャート、測定色は Bradford 変換で D65 から D50 へ順応)</translation>
    </message>
</context>
<context>
    <name>ColorCorrectionToolDlg</name>
    <message>
        <source>kalto Color Calibrator</source>
        <translation>kalto カラーキャリブレーター</translation>
    </message>
    <message>
        <source>Image acquisition is slowed down by certain parameter settings in the camera, e.g., exposure time.</source>
        <translation>カメラの特定のパラメーター設定（露光時間など）により、画像取得が遅くなっています。</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>カラーキャリブレーター</translation>
    </message>
    <message>
        <source>&lt;p&gt;The camera has been disconnected.&lt;br/&gt;Reconnect the camera to the computer and open it to continue using the Color Calibrator.&lt;/p&gt;</source>
        <translation>&lt;p&gt;カメラの接続が切断されました。&lt;br/&gt;カラーキャリブレーターを引き続き使用するには、カメラをコンピューターに再接続して開いてください。&lt;/p&gt;</translation>
    </message>
</context>
<context>
    <name>LiveImage</name>
    <message>
        <source>Camera image</source>
        <translation>カメラ画像</translation>
    </message>
    <message>
        <source>Arrow keys move the grid</source>
        <translation>矢印キーでグリッドを移動します</translation>
    </message>
</context>
<context>
    <name>MessageBox</name>
    <message>
        <source>Color Calibrator</source>
        <translation>カラーキャリブレーター</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>はい</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>No</source>
        <translation>いいえ</translation>
    </message>
</context>
<context>
    <name>Plugin::ColorCalibration::CColorCalibrationPlugin</name>
    <message>
        <source>Color Calibrator</source>
        <translation>カラーキャリブレーター</translation>
    </message>
    <message>
        <source>&lt;p&gt;To use the Color Calibrator, you have to stop continuous image acquisition as well as any recordings.&lt;p/&gt;Do you want to stop the camera and start using the Color Calibrator?</source>
        <translation>&lt;p&gt;カラーキャリブレーターを使用するには、連続画像取得とすべての録画を停止する必要があります。&lt;p/&gt;カメラを停止してカラーキャリブレーターを開始しますか？</translation>
    </message>
</context>
<context>
    <name>QMLExposureTime</name>
    <message>
        <source>Couldn't set exposureTime!&lt;br&gt;</source>
        <translation>露光時間を設定できませんでした！&lt;br&gt;</translation>
    </message>
</context>
<context>
    <name>QMLGainvalue</name>
    <message>
        <source>Couldn't set gain value!&lt;br&gt;</source>
        <translation>ゲイン値を設定できませんでした！&lt;br&gt;</translation>
    </message>
</context>
<context>
    <name>QmlDataModelInterface</name>
    <message>
        <source>Settings have been saved successfully in </source>
        <translation>設定を次の場所に保存しました: </translation>
    </message>
    <message>
        <source>Settings couldn’t be saved in </source>
        <translation>設定を次の場所に保存できませんでした: </translation>
    </message>
    <message>
        <source>Settings were saved successfully in </source>
        <translation>設定を次のユーザーセットに保存しました: </translation>
    </message>
    <message>
        <source>Summary has been saved successfully in </source>
        <translation>サマリーを次の場所に保存しました: </translation>
    </message>
    <message>
        <source>Summary couldn’t be saved in </source>
        <translation>サマリーを次の場所に保存できませんでした: </translation>
    </message>
</context>
<context>
    <name>ReportTable</name>
    <message>
        <source>Calibration Reports</source>
        <translation>キャリブレーションレポート</translation>
    </message>
</context>
<context>
    <name>SaveOption</name>
    <message>
        <source>Folder</source>
        <translation>フォルダー</translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation>参照...</translation>
    </message>
</context>
<context>
    <name>ShotControls</name>
    <message>
        <source>Continuous Shot</source>
        <translation>連続撮影</translation>
    </message>
    <message>
        <source>Single Shot</source>
        <translation>単発撮影</translation>
    </message>
</context>
<context>
    <name>Step1Position</name>
    <message>
        <source>To manually change the size and position of the grid, use the handles provided. The grid must be at least the same size as the color chart.&lt;br&gt;Click &lt;b&gt;Next&lt;/b&gt; to continue. The camera is then prepared for the calibration: its color settings are reset and the white balance is set on the gray patches of the chart.</source>
        <translation>グリッドのサイズと位置を手動で変更するには、ハンドルを使用してください。グリッドはカラーチャートと同じ大きさ以上である必要があります。&lt;br&gt;&lt;b&gt;次へ&lt;/b&gt;をクリックして続行します。カメラはキャリブレーションの準備を行います。色設定がリセットされ、チャートのグレーのパッチでホワイトバランスが設定されます。</translation>
    </message>
    <message>
        <source>Auto-position Grid</source>
        <translation>グリッドを自動配置</translation>
    </message>
    <message>
        <source>Load camera settings</source>
        <translation>カメラ設定を読み込む</translation>
    </message>
    <message>
        <source>Show Grid</source>
        <translation>グリッドを表示</translation>
    </message>
    <message>
        <source>KaltoFeatureStream files (*.pfs )</source>
        <translation>KaltoFeatureStream ファイル (*.pfs )</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>カラーキャリブレーター</translation>
    </message>
    <message>
        <source>Grid could not be positioned automatically.</source>
        <translation>グリッドを自動で配置できませんでした。</translation>
    </message>
</context>
<context>
    <name>Step2Brightness</name>
    <message>
        <source>Set the exposure time and the gain so that the gray patch is just right, or click Auto.</source>
        <translation>グレーのパッチがちょうど良くなるように露光時間とゲインを設定するか、「自動」をクリックしてください。</translation>
    </message>
    <message>
        <source>Exposure Time</source>
        <translation>露光時間</translation>
    </message>
    <message>
        <source>Gain</source>
        <translation>ゲイン</translation>
    </message>
    <message>
        <source>Auto</source>
        <translation>自動</translation>
    </message>
</context>
<context>
    <name>Step3Review</name>
    <message>
        <source>Point at a patch to compare its colors.</source>
        <translation>パッチにポインターを合わせると色を比較できます。</translation>
    </message>
    <message>
        <source>1 - Target Value</source>
        <translation>1 - 目標値</translation>
    </message>
    <message>
        <source>2 - Original Value</source>
        <translation>2 - 元の値</translation>
    </message>
    <message>
        <source>3 - Current Value</source>
        <translation>3 - 現在の値</translation>
    </message>
    <message>
        <source>Recalibrate Camera</source>
        <translation>カメラを再キャリブレーション</translation>
    </message>
    <message>
        <source>Calibration Reports</source>
        <translation>キャリブレーションレポート</translation>
    </message>
    <message>
        <source>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</source>
        <translation>カラーキャリブレーターを使用するため、LUT を無効にする必要がありました。LUT とカラーキャリブレーターを同時に使用すると、カラーキャリブレーションに悪影響を及ぼします。</translation>
    </message>
</context>
<context>
    <name>Step4Save</name>
    <message>
        <source>None</source>
        <translation>なし</translation>
    </message>
    <message>
        <source>Before Calibration</source>
        <translation>キャリブレーション前</translation>
    </message>
    <message>
        <source>After Calibration</source>
        <translation>キャリブレーション後</translation>
    </message>
    <message>
        <source>Save camera settings to file</source>
        <translation>カメラ設定をファイルに保存</translation>
    </message>
    <message>
        <source>Save calibration summary</source>
        <translation>キャリブレーションのサマリーを保存</translation>
    </message>
    <message>
        <source>Save camera settings in user set</source>
        <translation>カメラ設定をユーザーセットに保存</translation>
    </message>
    <message>
        <source>Save settings as default</source>
        <translation>設定をデフォルトとして保存</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>保存</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>カラーキャリブレーター</translation>
    </message>
    <message>
        <source>The calibration results have been saved.</source>
        <translation>キャリブレーション結果を保存しました。</translation>
    </message>
</context>
<context>
    <name>functions</name>
    <message>
        <source>Could not load previous settings.</source>
        <translation>以前の設定を読み込めませんでした。</translation>
    </message>
    <message>
        <source>Unable to set neutral settings.</source>
        <translation>ニュートラル設定を適用できません。</translation>
    </message>
    <message>
        <source>The calibration process failed because the image is either too bright or too dark. Adjust the brightness and try again.</source>
        <translation>画像が明るすぎるか暗すぎるため、キャリブレーション処理に失敗しました。明るさを調整してもう一度お試しください。</translation>
    </message>
    <message>
        <source>No initial parameters (min, max, value) &lt;br&gt; for exposure time available.</source>
        <translation>露光時間の初期パラメーター（最小、最大、値）が &lt;br&gt; ありません。</translation>
    </message>
    <message>
        <source>No initial parameters (min, max, value) &lt;br&gt; for gain value available.</source>
        <translation>ゲインの初期パラメーター（最小、最大、値）が &lt;br&gt; ありません。</translation>
    </message>
    <message>
        <source>Couldn't create a backup of the camera settings.</source>
        <translation>カメラ設定のバックアップを作成できませんでした。</translation>
    </message>
    <message>
        <source>Couldn't store detected exposure and gain values.</source>
        <translation>検出した露光時間とゲインの値を保存できませんでした。</translation>
    </message>
    <message>
        <source>Couldn't restore preneutral camera settings.</source>
        <translation>中立化前のカメラ設定を復元できませんでした。</translation>
    </message>
    <message>
        <source>Couldn't restore detected exposure and gain values.</source>
        <translation>検出した露光時間とゲインの値を復元できませんでした。</translation>
    </message>
    <message>
        <source>Couldn't apply initial camera image or set original patch color values.</source>
        <translation>カメラの初期画像を適用できないか、パッチの元の色を設定できませんでした。</translation>
    </message>
    <message>
        <source>Couldn't apply &lt;br&gt; initial values.</source>
        <translation>初期値を &lt;br&gt; 適用できませんでした。</translation>
    </message>
    <message>
        <source>The image is too bright. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>画像が明るすぎます。最適な明るさになるよう露光時間とゲインを調整してください。&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too dark. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>画像が暗すぎます。最適な明るさになるよう露光時間とゲインを調整してください。&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too bright and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>画像が明るすぎるため、キャリブレーションに失敗しました。最適な明るさになるよう露光時間とゲインを調整してください。&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too dark and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>画像が暗すぎるため、キャリブレーションに失敗しました。最適な明るさになるよう露光時間とゲインを調整してください。&lt;br&gt;</translation>
    </message>
    <message>
        <source>Calibration process failed.&lt;br&gt;</source>
        <translation>キャリブレーション処理に失敗しました。&lt;br&gt;</translation>
    </message>
    <message>
        <source>If you cancel the color calibration, any changes you made will be lost. The original settings will be restored. </source>
        <translation>カラーキャリブレーションをキャンセルすると、行った変更はすべて失われます。元の設定が復元されます。</translation>
    </message>
    <message>
        <source>Do you really want to cancel?</source>
        <translation>本当にキャンセルしますか？</translation>
    </message>
    <message>
        <source>Just right</source>
        <translation>ちょうど良い</translation>
    </message>
    <message>
        <source>Too dark</source>
        <translation>暗すぎ</translation>
    </message>
    <message>
        <source>Too bright</source>
        <translation>明るすぎ</translation>
    </message>
    <message>
        <source>autoadjust error</source>
        <translation>自動調整エラー</translation>
    </message>
    <message>
        <source>Autoadjust values &lt;br&gt; impossible!</source>
        <translation>自動調整は &lt;br&gt; できません！</translation>
    </message>
    <message>
        <source>Unable to apply initial camera image and patch values.</source>
        <translation>カメラの初期画像とパッチの値を適用できません。</translation>
    </message>
    <message>
        <source>Apply initial values failed.</source>
        <translation>初期値を適用できませんでした。</translation>
    </message>
    <message>
        <source>Calibration process failed.</source>
        <translation>キャリブレーション処理に失敗しました。</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>カラーキャリブレーター</translation>
    </message>
    <message>
        <source>You haven’t selected any of the save options. To save settings or results, select one of the available options.&lt;br&gt;</source>
        <translation>保存オプションが選択されていません。設定や結果を保存するには、いずれかのオプションを選択してください。&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't save settings to file path!&lt;br&gt;</source>
        <translation>設定をファイルパスに保存できませんでした！&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't save summary!&lt;br&gt;</source>
        <translation>サマリーを保存できませんでした！&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't store settings in user set: </source>
        <translation>設定をユーザーセットに保存できませんでした: </translation>
    </message>
    <message>
        <source>Colors</source>
        <translation>色</translation>
    </message>
    <message>
        <source>Black Level</source>
        <translation>黒レベル</translation>
    </message>
    <message>
        <source>White Balance</source>
        <translation>ホワイトバランス</translation>
    </message>
    <message>
        <source>Color Transformation</source>
        <translation>色変換</translation>
    </message>
    <message>
        <source>Color Adjustment Hue</source>
        <translation>色調整 色相</translation>
    </message>
    <message>
        <source>Color Adjustment Saturation</source>
        <translation>色調整 彩度</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>ガンマ</translation>
    </message>
    <message>
        <source>Hue, Saturation, Brightness, Contrast</source>
        <translation>色相、彩度、明るさ、コントラスト</translation>
    </message>
    <message>
        <source>LUT</source>
        <translation>LUT</translation>
    </message>
    <message>
        <source>Original</source>
        <translation>元の値</translation>
    </message>
    <message>
        <source>Target</source>
        <translation>目標</translation>
    </message>
    <message>
        <source>Current</source>
        <translation>現在</translation>
    </message>
    <message>
        <source>Delta E</source>
        <translation>デルタ E</translation>
    </message>
    <message>
        <source>Delta C</source>
        <translation>デルタ C</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Position Grid</source>
        <translation>グリッドの配置</translation>
    </message>
    <message>
        <source>Adjust Brightness</source>
        <translation>明るさの調整</translation>
    </message>
    <message>
        <source>Review Calibration Results</source>
        <translation>キャリブレーション結果の確認</translation>
    </message>
    <message>
        <source>Save Calibration Results</source>
        <translation>キャリブレーション結果の保存</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>カラーキャリブレーター</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>戻る</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>完了</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>次へ</translation>
    </message>
</context>
</TS>
