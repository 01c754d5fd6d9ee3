// Step logic of the wizard. Every function takes the wizard root `w`, which
// holds the wizard-wide state (activeStep, autoRefreshChecked, the brightness
// flags and the three message texts) and shows the message boxes; the backend
// is reached only through the context objects qmlModelInterface, camera,
// exposureTime and gainValue.

var firstStep = 1;
var lastStep = 4;
var needleScaleDegrees = 200;
var noValueHitRate = 1000;
var justRightBand = 20;

function stopGrabbing() {
    camera.stopGrab();
}

// Brings the camera from its backed-up state into the state step 2 works in:
// neutral, white balanced, mono image, auto functions off. Fills w.errorText
// or w.criticalText and returns false at the first failure.
function initialiseStep2(w) {
    stopGrabbing();
    if (qmlModelInterface.previousCalibrationFile !== "") {
        if (!qmlModelInterface.loadSettings(qmlModelInterface.previousCalibrationFile)) {
            w.errorText = qsTr("Could not load previous settings.");
            return false;
        }
    }
    if (!qmlModelInterface.setNeutralSettings()) {
        w.errorText = qsTr("Unable to set neutral settings.");
        return false;
    }
    if (!qmlModelInterface.executeWhitebalance()) {
        w.criticalText = qsTr("The calibration process failed because the image is either too bright or too dark. Adjust the brightness and try again.");
        return false;
    }
    qmlModelInterface.activateMonoImage();
    qmlModelInterface.disableAutoFunctions();
    if (!exposureTime.initialize()) {
        w.errorText = qsTr("No initial parameters (min, max, value) <br> for exposure time available.");
        return false;
    }
    if (!gainValue.initialize()) {
        w.errorText = qsTr("No initial parameters (min, max, value) <br> for gain value available.");
        return false;
    }
    return true;
}

function step1To2(w) {
    stopGrabbing();
    if (!qmlModelInterface.createSettingsBackup() || !qmlModelInterface.createSettingsBackup(true)) {
        w.errorText = qsTr("Couldn't create a backup of the camera settings.");
        return false;
    }
    if (initialiseStep2(w))
        return true;
    // Staying on step 1 must not leave the camera neutralised.
    stopGrabbing();
    qmlModelInterface.restoreSettingsBackup();
    return false;
}

// Runs the calls of the step 2 to 3 change in their order; the first one that
// fails names the error.
function calibrate(w) {
    var calls = [
        [function() { return qmlModelInterface.storeDetectedExposureAndGain(); },
         qsTr("Couldn't store detected exposure and gain values.")],
        [function() { return qmlModelInterface.restoreSettingsBackup(true); },
         qsTr("Couldn't restore preneutral camera settings.")],
        [function() { return qmlModelInterface.restoreDetectedExposureAndGain(); },
         qsTr("Couldn't restore detected exposure and gain values.")],
        [function() { return qmlModelInterface.applyInitialCameraImageAndPatchValues(); },
         qsTr("Couldn't apply initial camera image or set original patch color values.")],
        [function() { return qmlModelInterface.setNeutralSettings(); },
         qsTr("Unable to set neutral settings.")],
        [function() { return qmlModelInterface.restoreDetectedExposureAndGain(); },
         qsTr("Couldn't restore detected exposure and gain values.")],
        [function() { return qmlModelInterface.applyInitialColorPatchValues(); },
         qsTr("Couldn't apply <br> initial values.")]
    ];
    for (var i = 0; i < calls.length; ++i) {
        if (!calls[i][0]()) {
            w.errorText = calls[i][1];
            return false;
        }
    }
    if (!qmlModelInterface.executeCalibrationAndApply()) {
        var tooBright = qsTr("The image is too bright. Adjust the exposure time and the gain to achieve optimum brightness.<br>");
        var tooDark = qsTr("The image is too dark. Adjust the exposure time and the gain to achieve optimum brightness.<br>");
        if (w.warningText === tooBright) {
            w.errorText = qsTr("The image is too bright and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.<br>");
            w.warningText = "";
        } else if (w.warningText === tooDark) {
            w.errorText = qsTr("The image is too dark and the calibration failed. Adjust the exposure time and the gain to achieve optimum brightness.<br>");
            w.warningText = "";
        } else {
            w.errorText = qsTr("Calibration process failed.<br>");
        }
        return false;
    }
    return true;
}

function step2To3(w) {
    stopGrabbing();
    if (w.bImageToBright) {
        w.warningText = qsTr("The image is too bright. Adjust the exposure time and the gain to achieve optimum brightness.<br>");
        w.bImageToBright = false;
    }
    if (w.bImageToDark) {
        w.warningText = qsTr("The image is too dark. Adjust the exposure time and the gain to achieve optimum brightness.<br>");
        w.bImageToDark = false;
    }
    if (calibrate(w)) {
        // The brightness warning still tells the person why the results may be poor.
        w.errorText = "";
        w.criticalText = "";
        return true;
    }
    stopGrabbing();
    qmlModelInterface.restoreSettingsBackup();
    initialiseStep2(w);
    return false;
}

function finish(w) {
    w.finishing = true;
    stopGrabbing();
    w.autoRefreshChecked = false;
    qmlModelInterface.finish();
}

// "Next" (or Return): one attempt to leave the active step forwards.
function forward(w) {
    w.errorText = "";
    w.warningText = "";
    w.criticalText = "";
    var ok = true;
    switch (w.activeStep) {
    case 1: ok = step1To2(w); break;
    case 2: ok = step2To3(w); break;
    case 3: ok = true; break;
    case 4: finish(w); return;
    }
    w.showCollectedMessages(function() {
        if (ok)
            w.goToStep(w.activeStep + 1);
        else
            w.goToStep(w.activeStep);
    });
}

function back(w) {
    w.errorText = "";
    w.criticalText = "";
    if (w.activeStep === 2) {
        stopGrabbing();
        qmlModelInterface.restoreSettingsBackup();
    } else if (w.activeStep === 3) {
        initialiseStep2(w);
    }
    if (w.activeStep <= firstStep)
        return;
    w.showCollectedMessages(function() { w.goToStep(w.activeStep - 1); });
}

function cancel(w) {
    if (w.activeStep === firstStep) {
        qmlModelInterface.cancel();
        return;
    }
    w.ask(qsTr("If you cancel the color calibration, any changes you made will be lost. The original settings will be restored. ")
          + "<br>" + qsTr("Do you really want to cancel?"),
          function() { qmlModelInterface.cancel(); });
}

// Brightness gauge: the needle turns clockwise for a too bright image.
function needleAngle(rate) {
    var angle = (rate - 100) / 100 * needleScaleDegrees;
    return Math.max(-90, Math.min(90, angle));
}

function showsNeedle(rate) {
    return Math.abs(rate - 100) <= noValueHitRate;
}

function verdict(rate) {
    if (Math.abs(rate - 100) < justRightBand)
        return qsTr("Just right");
    return rate < 100 ? qsTr("Too dark") : qsTr("Too bright");
}

// Called whenever the needle angle changes. A rate exactly 20 away from the
// target reads "too dark"/"too bright" but sets no flag; that asymmetry is kept.
function updateBrightnessFlags(w, rate) {
    if (Math.abs(rate - 100) > justRightBand) {
        w.bImageToDark = rate < 100;
        w.bImageToBright = rate >= 100;
    } else {
        w.bImageToDark = false;
        w.bImageToBright = false;
    }
}

function autoAdjust(w) {
    w.controlsEnabled = false;
    if (!qmlModelInterface.autoAdjustGray80PercentPatch()) {
        w.controlsEnabled = true;
        w.showBox(qsTr("autoadjust error"), qsTr("Autoadjust values <br> impossible!"), "critical", null);
    }
}

// Automatic recalibration (demo mode). A failing first call only clears the
// success flag that the second call sets again, so it never stops the run.
function recalibrate(w) {
    var firstError = "";
    var ok = true;
    if (!qmlModelInterface.applyInitialCameraImageAndPatchValues()) {
        ok = false;
        firstError = qsTr("Unable to apply initial camera image and patch values.");
    }
    ok = qmlModelInterface.setNeutralSettings();
    if (!ok && firstError === "")
        firstError = qsTr("Unable to set neutral settings.");
    if (ok) {
        ok = qmlModelInterface.applyInitialColorPatchValues();
        if (!ok)
            firstError = qsTr("Apply initial values failed.");
    }
    if (ok) {
        ok = qmlModelInterface.executeCalibrationAndApply();
        if (!ok)
            firstError = qsTr("Calibration process failed.");
    }
    if (!ok) {
        qmlModelInterface.restoreSettingsBackup();
        w.showBox(qsTr("Color Calibrator"), firstError, "critical", null);
    }
    return ok;
}

// Step 4 "Save". userSet is "" for "None". Returns the error text, "" on success.
function save(w, userSet, saveAsDefault) {
    if (userSet === "" && qmlModelInterface.calibrationFileToSave === ""
            && qmlModelInterface.summaryFileToSave === "")
        return qsTr("You haven’t selected any of the save options. To save settings or results, select one of the available options.<br>");
    var error = "";
    if (!qmlModelInterface.saveSettingsToFilePath())
        error += qsTr("Couldn't save settings to file path!<br>");
    if (!qmlModelInterface.saveSummaryToFilePath())
        error += qsTr("Couldn't save summary!<br>");
    if (userSet !== "") {
        if (w.autoRefreshChecked)
            stopGrabbing();
        if (!qmlModelInterface.storeSettingsInUserSet(userSet, saveAsDefault))
            error += qsTr("Couldn't store settings in user set: ") + userSet;
        if (w.autoRefreshChecked)
            camera.startGrab();
    }
    return error;
}

// "#rgb" or "#rrggbb" becomes "R: r G: g B: b" in decimal; anything else is kept.
function displayValue(value) {
    if (value === null || value === undefined)
        return "";
    var text = String(value);
    var m = /^#([0-9a-fA-F]{3}|[0-9a-fA-F]{6})$/.exec(text);
    if (!m)
        return text;
    var hex = m[1];
    if (hex.length === 3)
        hex = hex[0] + hex[0] + hex[1] + hex[1] + hex[2] + hex[2];
    return "R: " + parseInt(hex.substr(0, 2), 16) + " G: " + parseInt(hex.substr(2, 2), 16)
            + " B: " + parseInt(hex.substr(4, 2), 16);
}

// Report sections of step 3 and where their values lie in the results document.
var reportKeys = ["Colors", "BlackLevel", "WhiteBalance", "Matrix", "BC6x2/Hue", "BC6x2/Saturation",
                  "Gamma", "HSBC", "LUT"];

function reportTitles() {
    return [qsTr("Colors"), qsTr("Black Level"), qsTr("White Balance"), qsTr("Color Transformation"),
            qsTr("Color Adjustment Hue"), qsTr("Color Adjustment Saturation"), qsTr("Gamma"),
            qsTr("Hue, Saturation, Brightness, Contrast"), qsTr("LUT")];
}

function descend(object, path) {
    var v = object;
    var parts = path.split("/");
    for (var i = 0; i < parts.length; ++i) {
        if (v === null || v === undefined || typeof v !== "object")
            return undefined;
        v = v[parts[i]];
    }
    return v;
}

// Rows of one report section: { title, cells: [text...] } plus the column
// headers. The colour section lists patches; the others compare the camera
// before ("Original") and after ("Current") the calibration.
function reportTable(json, index) {
    var results = {};
    try {
        results = JSON.parse(json || "{}");
    } catch (e) {
        results = {};
    }
    var key = reportKeys[index];
    var table = { columns: [], rows: [] };
    if (key === "LUT")
        return table;
    if (key === "Colors") {
        var colors = results["Colors"] || {};
        table.columns = [qsTr("Original"), qsTr("Target"), qsTr("Current"), qsTr("Delta E"), qsTr("Delta C")];
        var patches = Object.keys(colors).sort();
        for (var p = 0; p < patches.length; ++p) {
            var c = colors[patches[p]];
            table.rows.push({ title: patches[p],
                              cells: [displayValue(c["Initial"]), displayValue(c["Target"]),
                                      displayValue(c["Current"]), displayValue(c["DeltaE"]),
                                      displayValue(c["DeltaC"])] });
        }
        return table;
    }
    var branches = [["Original", qsTr("Original")], ["Calibrated", qsTr("Current")]];
    var original = descend(results["Original"], key);
    if (original !== null && typeof original === "object")
        table.columns = Object.keys(original);
    else
        table.columns = [reportTitles()[index]];
    for (var b = 0; b < branches.length; ++b) {
        var v = descend(results[branches[b][0]], key);
        var cells = [];
        if (v !== null && typeof v === "object") {
            for (var k = 0; k < table.columns.length; ++k)
                cells.push(displayValue(v[table.columns[k]]));
        } else {
            cells.push(displayValue(v));
        }
        table.rows.push({ title: branches[b][1], cells: cells });
    }
    return table;
}

function plainText(text) {
    return String(text).replace(/<br\s*\/?>/gi, "\n").replace(/<[^>]*>/g, "").trim();
}
