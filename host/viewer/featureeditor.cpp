#include "featureeditor.h"

#include "viewerlog.h"

#include "parametercollection/booleanparameter.h"
#include "parametercollection/commandparameter.h"
#include "parametercollection/enumparameter.h"
#include "parametercollection/floatparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"
#include "parametercollection/stringparameter.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>

#include <cmath>
#include <functional>
#include <limits>

namespace {

constexpr int SliderSteps = 1000;

void logFailure(const QString& feature, const char* what)
{
    qCWarning(viewerLog, "@{%s};%s", qPrintable(QObject::tr("Features")),
              qPrintable(QObject::tr("%1 could not be written: %2").arg(feature, QString::fromUtf8(what))));
}

int decimalsFor(double increment)
{
    if (increment <= 0.0)
        return 4;
    return std::max(0, std::min(6, int(std::ceil(-std::log10(increment)))));
}

// Writes through `write` and shows what the camera holds afterwards; a
// refused write is logged.
template <class Write>
void writeAndRefresh(FeatureEditor* editor, const QString& feature, Write write)
{
    try {
        write();
    } catch (const std::exception& e) {
        logFailure(feature, e.what());
    }
    editor->refresh();
}

// Each builder below adds its widgets to the editor's row and returns how they show
// the camera's value, range and access.

std::function<void()> floatEditor(FeatureEditor* editor,
                                  QSharedPointer<ParameterCollection::FloatParameter> p, const QString& name)
{
    auto* layout = static_cast<QHBoxLayout*>(editor->layout());
    auto* slider = new QSlider(Qt::Horizontal, editor);
    auto* box = new QDoubleSpinBox(editor);
    slider->setRange(0, SliderSteps);
    layout->addWidget(slider, 1);
    layout->addWidget(box);
    auto write = [editor, p, name](double v) { writeAndRefresh(editor, name, [&] { p->setValue(v); }); };
    QObject::connect(box, QOverload<double>::of(&QDoubleSpinBox::valueChanged), editor, write);
    QObject::connect(slider, &QSlider::sliderReleased, editor, [p, slider, write] {
        write(p->minimum() + (p->maximum() - p->minimum()) * slider->value() / SliderSteps);
    });
    return [p, slider, box] {
        const QSignalBlocker b1(slider), b2(box);
        const double lo = p->minimum(), hi = p->maximum(), v = p->value();
        box->setDecimals(decimalsFor(p->increment()));
        box->setRange(lo, hi);
        box->setSingleStep(p->hasIncrement() ? p->increment() : (hi - lo) / 100.0);
        box->setSuffix(p->unit().isEmpty() ? QString() : QLatin1Char(' ') + p->unit());
        box->setValue(v);
        slider->setValue(hi > lo ? int(std::lround((v - lo) / (hi - lo) * SliderSteps)) : 0);
        const bool writable = p->isWritable();
        slider->setEnabled(writable);
        box->setEnabled(writable);
        slider->setToolTip(QStringLiteral("%1 .. %2").arg(lo).arg(hi));
    };
}

std::function<void()> integerEditor(FeatureEditor* editor,
                                    QSharedPointer<ParameterCollection::IntegerParameter> p, const QString& name)
{
    auto* layout = static_cast<QHBoxLayout*>(editor->layout());
    auto* slider = new QSlider(Qt::Horizontal, editor);
    auto* box = new QDoubleSpinBox(editor);
    box->setDecimals(0);
    layout->addWidget(slider, 1);
    layout->addWidget(box);
    auto write = [editor, p, name](double v) {
        writeAndRefresh(editor, name, [&] { p->setValue(qint64(std::llround(v))); });
    };
    QObject::connect(box, QOverload<double>::of(&QDoubleSpinBox::valueChanged), editor, write);
    QObject::connect(slider, &QSlider::sliderReleased, editor, [slider, write] { write(slider->value()); });
    return [p, slider, box] {
        const QSignalBlocker b1(slider), b2(box);
        const qint64 lo = p->minimum(), hi = p->maximum(), v = p->value();
        box->setRange(double(lo), double(hi));
        box->setValue(double(v));
        const bool fits = lo >= std::numeric_limits<int>::min() && hi <= std::numeric_limits<int>::max();
        slider->setVisible(fits);
        if (fits) {
            slider->setRange(int(lo), int(hi));
            slider->setValue(int(v));
        }
        const bool writable = p->isWritable();
        slider->setEnabled(writable);
        box->setEnabled(writable);
    };
}

std::function<void()> enumerationEditor(FeatureEditor* editor,
                                        QSharedPointer<ParameterCollection::EnumParameter> p, const QString& name)
{
    auto* layout = static_cast<QHBoxLayout*>(editor->layout());
    auto* combo = new QComboBox;
    layout->addWidget(combo);
    combo->setParent(editor);
    QObject::connect(combo, QOverload<int>::of(&QComboBox::activated), editor, [editor, p, combo, name] {
        writeAndRefresh(editor, name, [&] { p->setValue(combo->currentData().toString()); });
    });
    return [p, combo] {
        const QSignalBlocker block(combo);
        // Rebuilt only when the entries change, so an open list stays put.
        QStringList symbolics;
        for (int i = 0; i < combo->count(); ++i)
            symbolics << combo->itemData(i).toString();
        if (symbolics != p->symbolics()) {
            combo->clear();
            for (const QVariantMap& entry : p->entries())
                if (entry.value(QStringLiteral("Available")).toBool())
                    combo->addItem(entry.value(QStringLiteral("DisplayName")).toString(),
                                   entry.value(QStringLiteral("Symbolic")));
        }
        combo->setCurrentIndex(combo->findData(p->value()));
        combo->setEnabled(p->isWritable());
    };
}

std::function<void()> booleanEditor(FeatureEditor* editor,
                                    QSharedPointer<ParameterCollection::BooleanParameter> p, const QString& name)
{
    auto* layout = static_cast<QHBoxLayout*>(editor->layout());
    auto* check = new QCheckBox;
    layout->addWidget(check);
    check->setParent(editor);
    check->setAccessibleName(name);
    QObject::connect(check, &QCheckBox::toggled, editor, [editor, p, name](bool on) {
        writeAndRefresh(editor, name, [&] { p->setValue(on); });
    });
    return [p, check] {
        const QSignalBlocker block(check);
        check->setChecked(p->value());
        check->setEnabled(p->isWritable());
    };
}

std::function<void()> stringEditor(FeatureEditor* editor,
                                   QSharedPointer<ParameterCollection::StringParameter> p, const QString& name)
{
    auto* layout = static_cast<QHBoxLayout*>(editor->layout());
    auto* line = new QLineEdit;
    layout->addWidget(line);
    line->setParent(editor);
    QObject::connect(line, &QLineEdit::editingFinished, editor, [editor, p, line, name] {
        writeAndRefresh(editor, name, [&] { p->setValue(line->text()); });
    });
    return [p, line] {
        const QSignalBlocker block(line);
        line->setText(p->value());
        line->setReadOnly(!p->isWritable());
    };
}

std::function<void()> commandEditor(FeatureEditor* editor,
                                    QSharedPointer<ParameterCollection::CommandParameter> p, const QString& name)
{
    auto* layout = static_cast<QHBoxLayout*>(editor->layout());
    auto* button = new QPushButton(FeatureEditor::tr("Execute"));
    layout->addWidget(button);
    button->setParent(editor);
    button->setAccessibleName(name);
    QObject::connect(button, &QPushButton::clicked, editor, [editor, p, name] {
        writeAndRefresh(editor, name, [&] { p->execute(); });
    });
    return [p, button] { button->setEnabled(p->isWritable()); };
}

}  // namespace

struct FeatureEditor::Impl {
    QSharedPointer<ParameterCollection::Parameter> parameter;
    std::function<void()> refresh;
};

FeatureEditor::FeatureEditor(const QString& name, const QString& kind, Impl* impl, QWidget* parent)
    : QWidget(parent), m_name(name), m_kind(kind), d(impl)
{
    setAccessibleName(name);
    connect(d->parameter.data(), &ParameterCollection::Parameter::parameterDataChangedDecoupled, this,
            &FeatureEditor::changed);
}

FeatureEditor::~FeatureEditor()
{
    delete d;
}

void FeatureEditor::refresh()
{
    const bool readable = d->parameter->isReadable();
    setEnabled(readable);
    if (!readable)
        return;
    try {
        d->refresh();
    } catch (const std::exception&) {
        setEnabled(false);
    }
}

FeatureEditor* FeatureEditor::create(const ParameterCollection::IParameterCollection& collection,
                                     const QString& name, QWidget* parent)
{
    using namespace ParameterCollection;
    auto* impl = new Impl;
    FeatureEditor* editor = nullptr;
    // The editor of `kind` for `p`, its widgets laid out in a row.
    auto make = [&](const char* kind, const QSharedPointer<Parameter>& p) {
        impl->parameter = p;
        editor = new FeatureEditor(name, QLatin1String(kind), impl, parent);
        auto* layout = new QHBoxLayout(editor);
        layout->setContentsMargins(0, 0, 0, 0);
        return editor;
    };
    if (auto p = collection.parameter(FloatParameterName(name)); !p->isNull())
        impl->refresh = floatEditor(make("Float", p), p, name);
    else if (auto p = collection.parameter(IntegerParameterName(name)); !p->isNull())
        impl->refresh = integerEditor(make("Integer", p), p, name);
    else if (auto p = collection.parameter(EnumParameterName(name)); !p->isNull())
        impl->refresh = enumerationEditor(make("Enumeration", p), p, name);
    else if (auto p = collection.parameter(BooleanParameterName(name)); !p->isNull())
        impl->refresh = booleanEditor(make("Boolean", p), p, name);
    else if (auto p = collection.parameter(StringParameterName(name)); !p->isNull())
        impl->refresh = stringEditor(make("String", p), p, name);
    else if (auto p = collection.parameter(CommandParameterName(name)); !p->isNull())
        impl->refresh = commandEditor(make("Command", p), p, name);
    else {
        delete impl;
        return nullptr;
    }
    editor->refresh();
    return editor;
}
