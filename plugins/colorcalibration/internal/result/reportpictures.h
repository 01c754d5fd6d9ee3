#pragma once

#include "publishedchartedition.h"

#include <QColor>
#include <QImage>
#include <QJsonObject>
#include <QString>
#include <QVector>

/// The report's pictures of a calibration, drawn from the results document's
/// "PreciseColors": the 24 patches each split into target, before and after;
/// the CIEDE2000 error of every patch before and after with the means; and the
/// same error against the chart maker's published values (`edition`, D50).
/// Each is given as SVG text (to be inlined in the HTML) and as an image, both
/// drawn from one list of marks so they cannot disagree.
class ReportPictures {
public:
    explicit ReportPictures(const QJsonObject& preciseColors,
                            PublishedChartEdition edition = PublishedChartEdition::Post2014);

    /// False unless all 24 patches with their three colours were found.
    bool isValid() const { return m_valid; }
    QString patchesSvg() const;
    QString errorSvg() const;
    QString publishedErrorSvg() const;
    QImage patchesImage() const;
    QImage errorImage() const;
    QImage publishedErrorImage() const;

    /// Titles of the three pictures, translated.
    static QString patchesTitle();
    static QString errorTitle();
    static QString publishedErrorTitle();

    /// ΔE00 of patch `k` (0..23) before (the uncorrected camera) and after.
    double deltaEBefore(int k) const { return m_before[k]; }
    double deltaEAfter(int k) const { return m_after[k]; }
    /// The same against the published chart values.
    double publishedDeltaEBefore(int k) const { return m_publishedBefore[k]; }
    double publishedDeltaEAfter(int k) const { return m_publishedAfter[k]; }

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
    /// A bar chart of two error lists with their means; `caption` heads the axis.
    static Picture errors(const QVector<double>& before, const QVector<double>& after, const QString& title,
                          const QString& caption);
    QString publishedCaption() const;
    static QString svg(const Picture& picture);
    static QImage image(const Picture& picture);

    bool m_valid = false;
    QVector<QColor> m_target, m_initial, m_current;
    QVector<double> m_before, m_after;
    QVector<double> m_publishedBefore, m_publishedAfter;
    PublishedChartEdition m_edition;
};
