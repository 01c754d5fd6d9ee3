#pragma once

#include <QColor>
#include <QImage>
#include <QJsonObject>
#include <QString>
#include <QVector>

/// The report's two pictures of a calibration, drawn from the results document's
/// "PreciseColors": the 24 patches each split into target, before and after, and
/// the CIEDE2000 error of every patch before and after with the means. Each is
/// given as SVG text (to be inlined in the HTML) and as an image, both drawn from
/// one list of marks so they cannot disagree.
class ReportPictures {
public:
    explicit ReportPictures(const QJsonObject& preciseColors);

    /// False unless all 24 patches with their three colours were found.
    bool isValid() const { return m_valid; }
    QString patchesSvg() const;
    QString errorSvg() const;
    QImage patchesImage() const;
    QImage errorImage() const;

    /// ΔE00 of patch `k` (0..23) before (the uncorrected camera) and after.
    double deltaEBefore(int k) const { return m_before[k]; }
    double deltaEAfter(int k) const { return m_after[k]; }

private:
    struct Mark {
        enum Kind { Rect, Line, Text } kind;
        QRectF box;  ///< a line runs from its top-left to its bottom-right
        QColor colour;
        QString text;
    };
    /// A named group of marks: "patch" or "bar before"/"bar after" and so on.
    struct Group {
        QString cls;
        QVector<Mark> marks;
    };
    struct Picture {
        QSize size;
        QString title;
        QVector<Group> groups;
    };

    Picture patches() const;
    Picture errors() const;
    static QString svg(const Picture& picture);
    static QImage image(const Picture& picture);

    bool m_valid = false;
    QVector<QColor> m_target, m_initial, m_current;
    QVector<double> m_before, m_after;
};
