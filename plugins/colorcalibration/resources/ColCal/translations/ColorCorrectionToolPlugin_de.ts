<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>CalibrationResult</name>
    <message>
        <source>Colors</source>
        <translation>Farben</translation>
    </message>
    <message>
        <source>Black Level</source>
        <translation>Schwarzwert</translation>
    </message>
    <message>
        <source>White Balance</source>
        <translation>Weißabgleich</translation>
    </message>
    <message>
        <source>Color Transformation</source>
        <translation>Farbtransformation</translation>
    </message>
    <message>
        <source>Color Adjustment Hue</source>
        <translation>Farbanpassung Farbton</translation>
    </message>
    <message>
        <source>Color Adjustment Saturation</source>
        <translation>Farbanpassung Sättigung</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>Gamma</translation>
    </message>
    <message>
        <source>Hue, Saturation, Brightness, Contrast</source>
        <translation>Farbton, Sättigung, Helligkeit, Kontrast</translation>
    </message>
    <message>
        <source>LUT</source>
        <translation>LUT</translation>
    </message>
    <message>
        <source>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</source>
        <translation>Für die Farbkalibrierung musste die LUT deaktiviert werden. Eine gleichzeitig aktive LUT würde die Farbkalibrierung verfälschen.</translation>
    </message>
    <message>
        <source>Patches</source>
        <translation>Farbfelder</translation>
    </message>
    <message>
        <source>Colour error</source>
        <translation>Farbabweichung</translation>
    </message>
    <message>
        <source>Colour error against the published chart values</source>
        <translation>Farbabweichung gegenüber den veröffentlichten Farbtafelwerten</translation>
    </message>
    <message>
        <source>Each patch: target (top), before (bottom left), after (bottom right)</source>
        <translation>Jedes Farbfeld: Ziel (oben), vorher (unten links), nachher (unten rechts)</translation>
    </message>
    <message>
        <source>dE00 per patch</source>
        <translation>dE00 je Farbfeld</translation>
    </message>
    <message>
        <source>before (camera as found), mean %1</source>
        <translation>vorher (Kamera wie vorgefunden), Mittelwert %1</translation>
    </message>
    <message>
        <source>after, mean %1</source>
        <translation>nachher, Mittelwert %1</translation>
    </message>
    <message>
        <source>dE00 per patch against the published chart values (D50, %1 chart; measured colours adapted from D65 by Bradford)</source>
        <translation>dE00 je Farbfeld gegenüber den veröffentlichten Farbtafelwerten (D50, Farbtafel %1; Messwerte mit Bradford von D65 nach D50 umgerechnet)</translation>
    </message>
</context>
<context>
    <name>ColorCorrectionToolDlg</name>
    <message>
        <source>kalto Color Calibrator</source>
        <translation>kalto Farbkalibrierung</translation>
    </message>
    <message>
        <source>Image acquisition is slowed down by certain parameter settings in the camera, e.g., exposure time.</source>
        <translation>Die Bildaufnahme wird durch bestimmte Parametereinstellungen der Kamera verlangsamt, z. B. durch die Belichtungszeit.</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>Farbkalibrierung</translation>
    </message>
    <message>
        <source>&lt;p&gt;The camera has been disconnected.&lt;br/&gt;Reconnect the camera to the computer and open it to continue using the Color Calibrator.&lt;/p&gt;</source>
        <translation>&lt;p&gt;Die Verbindung zur Kamera wurde getrennt.&lt;br/&gt;Schließen Sie die Kamera wieder an den Computer an und öffnen Sie sie, um die Farbkalibrierung weiter zu verwenden.&lt;/p&gt;</translation>
    </message>
</context>
<context>
    <name>LiveImage</name>
    <message>
        <source>Camera image</source>
        <translation>Kamerabild</translation>
    </message>
    <message>
        <source>Arrow keys move the grid</source>
        <translation>Die Pfeiltasten verschieben das Raster</translation>
    </message>
</context>
<context>
    <name>MessageBox</name>
    <message>
        <source>Color Calibrator</source>
        <translation>Farbkalibrierung</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
</context>
<context>
    <name>Plugin::ColorCalibration::CColorCalibrationPlugin</name>
    <message>
        <source>Color Calibrator</source>
        <translation>Farbkalibrierung</translation>
    </message>
    <message>
        <source>&lt;p&gt;To use the Color Calibrator, you have to stop continuous image acquisition as well as any recordings.&lt;p/&gt;Do you want to stop the camera and start using the Color Calibrator?</source>
        <translation>&lt;p&gt;Für die Farbkalibrierung müssen die Daueraufnahme und alle Aufzeichnungen beendet werden.&lt;p/&gt;Möchten Sie die Kamera anhalten und die Farbkalibrierung starten?</translation>
    </message>
</context>
<context>
    <name>QMLExposureTime</name>
    <message>
        <source>Couldn't set exposureTime!&lt;br&gt;</source>
        <translation>Die Belichtungszeit konnte nicht gesetzt werden!&lt;br&gt;</translation>
    </message>
</context>
<context>
    <name>QMLGainvalue</name>
    <message>
        <source>Couldn't set gain value!&lt;br&gt;</source>
        <translation>Die Verstärkung konnte nicht gesetzt werden!&lt;br&gt;</translation>
    </message>
</context>
<context>
    <name>QmlDataModelInterface</name>
    <message>
        <source>Settings have been saved successfully in </source>
        <translation>Die Einstellungen wurden erfolgreich gespeichert in </translation>
    </message>
    <message>
        <source>Settings couldn’t be saved in </source>
        <translation>Die Einstellungen konnten nicht gespeichert werden in </translation>
    </message>
    <message>
        <source>Settings were saved successfully in </source>
        <translation>Die Einstellungen wurden erfolgreich gespeichert in </translation>
    </message>
    <message>
        <source>Summary has been saved successfully in </source>
        <translation>Die Zusammenfassung wurde erfolgreich gespeichert in </translation>
    </message>
    <message>
        <source>Summary couldn’t be saved in </source>
        <translation>Die Zusammenfassung konnte nicht gespeichert werden in </translation>
    </message>
</context>
<context>
    <name>ReportTable</name>
    <message>
        <source>Calibration Reports</source>
        <translation>Kalibrierberichte</translation>
    </message>
</context>
<context>
    <name>SaveOption</name>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation>Durchsuchen...</translation>
    </message>
</context>
<context>
    <name>ShotControls</name>
    <message>
        <source>Continuous Shot</source>
        <translation>Daueraufnahme</translation>
    </message>
    <message>
        <source>Single Shot</source>
        <translation>Einzelaufnahme</translation>
    </message>
</context>
<context>
    <name>Step1Position</name>
    <message>
        <source>To manually change the size and position of the grid, use the handles provided. The grid must be at least the same size as the color chart.&lt;br&gt;Click &lt;b&gt;Next&lt;/b&gt; to continue. The camera is then prepared for the calibration: its color settings are reset and the white balance is set on the gray patches of the chart.</source>
        <translation>Mit den Anfassern ändern Sie Größe und Lage des Rasters von Hand. Das Raster muss mindestens so groß sein wie die Farbtafel.&lt;br&gt;Klicken Sie auf &lt;b&gt;Weiter&lt;/b&gt;, um fortzufahren. Die Kamera wird dann für die Kalibrierung vorbereitet: Ihre Farbeinstellungen werden zurückgesetzt und der Weißabgleich wird an den grauen Feldern der Tafel eingestellt.</translation>
    </message>
    <message>
        <source>Auto-position Grid</source>
        <translation>Raster automatisch positionieren</translation>
    </message>
    <message>
        <source>Load camera settings</source>
        <translation>Kameraeinstellungen laden</translation>
    </message>
    <message>
        <source>Show Grid</source>
        <translation>Raster anzeigen</translation>
    </message>
    <message>
        <source>KaltoFeatureStream files (*.pfs )</source>
        <translation>KaltoFeatureStream-Dateien (*.pfs )</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>Farbkalibrierung</translation>
    </message>
    <message>
        <source>Grid could not be positioned automatically.</source>
        <translation>Das Raster konnte nicht automatisch positioniert werden.</translation>
    </message>
</context>
<context>
    <name>Step2Brightness</name>
    <message>
        <source>Set the exposure time and the gain so that the gray patch is just right, or click Auto.</source>
        <translation>Stellen Sie Belichtungszeit und Verstärkung so ein, dass das graue Feld genau richtig ist, oder klicken Sie auf Automatisch.</translation>
    </message>
    <message>
        <source>Exposure Time</source>
        <translation>Belichtungszeit</translation>
    </message>
    <message>
        <source>Gain</source>
        <translation>Verstärkung</translation>
    </message>
    <message>
        <source>Auto</source>
        <translation>Automatisch</translation>
    </message>
</context>
<context>
    <name>Step3Review</name>
    <message>
        <source>Point at a patch to compare its colors.</source>
        <translation>Zeigen Sie auf ein Farbfeld, um seine Farben zu vergleichen.</translation>
    </message>
    <message>
        <source>1 - Target Value</source>
        <translation>1 - Sollwert</translation>
    </message>
    <message>
        <source>2 - Original Value</source>
        <translation>2 - Ausgangswert</translation>
    </message>
    <message>
        <source>3 - Current Value</source>
        <translation>3 - Aktueller Wert</translation>
    </message>
    <message>
        <source>Recalibrate Camera</source>
        <translation>Kamera neu kalibrieren</translation>
    </message>
    <message>
        <source>Calibration Reports</source>
        <translation>Kalibrierberichte</translation>
    </message>
    <message>
        <source>To use the Color Calibrator, the LUT had to be disabled. Using a LUT and the Color Calibrator at the same time, would adversely affect the color calibration.</source>
        <translation>Für die Farbkalibrierung musste die LUT deaktiviert werden. Eine gleichzeitig aktive LUT würde die Farbkalibrierung verfälschen.</translation>
    </message>
</context>
<context>
    <name>Step4Save</name>
    <message>
        <source>None</source>
        <translation>Keines</translation>
    </message>
    <message>
        <source>Before Calibration</source>
        <translation>Vor der Kalibrierung</translation>
    </message>
    <message>
        <source>After Calibration</source>
        <translation>Nach der Kalibrierung</translation>
    </message>
    <message>
        <source>Save camera settings to file</source>
        <translation>Kameraeinstellungen in Datei speichern</translation>
    </message>
    <message>
        <source>Save calibration summary</source>
        <translation>Kalibrierzusammenfassung speichern</translation>
    </message>
    <message>
        <source>Save camera settings in user set</source>
        <translation>Kameraeinstellungen im User Set speichern</translation>
    </message>
    <message>
        <source>Save settings as default</source>
        <translation>Einstellungen als Standard speichern</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>Farbkalibrierung</translation>
    </message>
    <message>
        <source>The calibration results have been saved.</source>
        <translation>Die Kalibrierergebnisse wurden gespeichert.</translation>
    </message>
</context>
<context>
    <name>functions</name>
    <message>
        <source>Could not load previous settings.</source>
        <translation>Die vorherigen Einstellungen konnten nicht geladen werden.</translation>
    </message>
    <message>
        <source>Unable to set neutral settings.</source>
        <translation>Die neutralen Einstellungen konnten nicht gesetzt werden.</translation>
    </message>
    <message>
        <source>The calibration process failed because the image is either too bright or too dark. Adjust the brightness and try again.</source>
        <translation>Die Kalibrierung ist fehlgeschlagen, weil das Bild zu hell oder zu dunkel ist. Passen Sie die Helligkeit an und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>No initial parameters (min, max, value) &lt;br&gt; for exposure time available.</source>
        <translation>Keine Ausgangsparameter (Min., Max., Wert) &lt;br&gt; für die Belichtungszeit verfügbar.</translation>
    </message>
    <message>
        <source>No initial parameters (min, max, value) &lt;br&gt; for gain value available.</source>
        <translation>Keine Ausgangsparameter (Min., Max., Wert) &lt;br&gt; für die Verstärkung verfügbar.</translation>
    </message>
    <message>
        <source>Couldn't create a backup of the camera settings.</source>
        <translation>Von den Kameraeinstellungen konnte keine Sicherung angelegt werden.</translation>
    </message>
    <message>
        <source>Couldn't store detected exposure and gain values.</source>
        <translation>Die ermittelten Werte für Belichtungszeit und Verstärkung konnten nicht gespeichert werden.</translation>
    </message>
    <message>
        <source>Couldn't restore preneutral camera settings.</source>
        <translation>Die Kameraeinstellungen vor der Neutralisierung konnten nicht wiederhergestellt werden.</translation>
    </message>
    <message>
        <source>Couldn't restore detected exposure and gain values.</source>
        <translation>Die ermittelten Werte für Belichtungszeit und Verstärkung konnten nicht wiederhergestellt werden.</translation>
    </message>
    <message>
        <source>Couldn't apply initial camera image or set original patch color values.</source>
        <translation>Das Ausgangsbild der Kamera konnte nicht übernommen oder die ursprünglichen Feldfarben konnten nicht gesetzt werden.</translation>
    </message>
    <message>
        <source>Couldn't apply &lt;br&gt; initial values.</source>
        <translation>Die Ausgangswerte konnten &lt;br&gt; nicht übernommen werden.</translation>
    </message>
    <message>
        <source>The image is too bright. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>Das Bild ist zu hell. Passen Sie Belichtungszeit und Verstärkung an, um die optimale Helligkeit zu erreichen.&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too dark. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>Das Bild ist zu dunkel. Passen Sie Belichtungszeit und Verstärkung an, um die optimale Helligkeit zu erreichen.&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too bright and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>Das Bild ist zu hell und die Kalibrierung ist fehlgeschlagen. Passen Sie Belichtungszeit und Verstärkung an, um die optimale Helligkeit zu erreichen.&lt;br&gt;</translation>
    </message>
    <message>
        <source>The image is too dark and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.&lt;br&gt;</source>
        <translation>Das Bild ist zu dunkel und die Kalibrierung ist fehlgeschlagen. Passen Sie Belichtungszeit und Verstärkung an, um die optimale Helligkeit zu erreichen.&lt;br&gt;</translation>
    </message>
    <message>
        <source>Calibration process failed.&lt;br&gt;</source>
        <translation>Die Kalibrierung ist fehlgeschlagen.&lt;br&gt;</translation>
    </message>
    <message>
        <source>If you cancel the color calibration, any changes you made will be lost. The original settings will be restored. </source>
        <translation>Wenn Sie die Farbkalibrierung abbrechen, gehen alle Änderungen verloren. Die ursprünglichen Einstellungen werden wiederhergestellt. </translation>
    </message>
    <message>
        <source>Do you really want to cancel?</source>
        <translation>Möchten Sie wirklich abbrechen?</translation>
    </message>
    <message>
        <source>Just right</source>
        <translation>Genau richtig</translation>
    </message>
    <message>
        <source>Too dark</source>
        <translation>Zu dunkel</translation>
    </message>
    <message>
        <source>Too bright</source>
        <translation>Zu hell</translation>
    </message>
    <message>
        <source>autoadjust error</source>
        <translation>Fehler bei der automatischen Einstellung</translation>
    </message>
    <message>
        <source>Autoadjust values &lt;br&gt; impossible!</source>
        <translation>Automatische Einstellung &lt;br&gt; nicht möglich!</translation>
    </message>
    <message>
        <source>Unable to apply initial camera image and patch values.</source>
        <translation>Das Ausgangsbild der Kamera und die Feldwerte konnten nicht übernommen werden.</translation>
    </message>
    <message>
        <source>Apply initial values failed.</source>
        <translation>Die Ausgangswerte konnten nicht übernommen werden.</translation>
    </message>
    <message>
        <source>Calibration process failed.</source>
        <translation>Die Kalibrierung ist fehlgeschlagen.</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>Farbkalibrierung</translation>
    </message>
    <message>
        <source>You haven’t selected any of the save options. To save settings or results, select one of the available options.&lt;br&gt;</source>
        <translation>Sie haben keine Speicheroption gewählt. Wählen Sie eine der verfügbaren Optionen, um Einstellungen oder Ergebnisse zu speichern.&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't save settings to file path!&lt;br&gt;</source>
        <translation>Die Einstellungen konnten nicht im Dateipfad gespeichert werden!&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't save summary!&lt;br&gt;</source>
        <translation>Die Zusammenfassung konnte nicht gespeichert werden!&lt;br&gt;</translation>
    </message>
    <message>
        <source>Couldn't store settings in user set: </source>
        <translation>Die Einstellungen konnten nicht im User Set gespeichert werden: </translation>
    </message>
    <message>
        <source>Colors</source>
        <translation>Farben</translation>
    </message>
    <message>
        <source>Black Level</source>
        <translation>Schwarzwert</translation>
    </message>
    <message>
        <source>White Balance</source>
        <translation>Weißabgleich</translation>
    </message>
    <message>
        <source>Color Transformation</source>
        <translation>Farbtransformation</translation>
    </message>
    <message>
        <source>Color Adjustment Hue</source>
        <translation>Farbanpassung Farbton</translation>
    </message>
    <message>
        <source>Color Adjustment Saturation</source>
        <translation>Farbanpassung Sättigung</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>Gamma</translation>
    </message>
    <message>
        <source>Hue, Saturation, Brightness, Contrast</source>
        <translation>Farbton, Sättigung, Helligkeit, Kontrast</translation>
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
        <translation>Soll</translation>
    </message>
    <message>
        <source>Current</source>
        <translation>Aktuell</translation>
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
        <translation>Raster positionieren</translation>
    </message>
    <message>
        <source>Adjust Brightness</source>
        <translation>Helligkeit einstellen</translation>
    </message>
    <message>
        <source>Review Calibration Results</source>
        <translation>Kalibrierergebnisse prüfen</translation>
    </message>
    <message>
        <source>Save Calibration Results</source>
        <translation>Kalibrierergebnisse speichern</translation>
    </message>
    <message>
        <source>Color Calibrator</source>
        <translation>Farbkalibrierung</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>Fertigstellen</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Weiter</translation>
    </message>
</context>
</TS>
