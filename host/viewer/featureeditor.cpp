#include "featureeditor.h"

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
    qWarning("@{%s};%s", qPrintable(QObject::tr("Features")),
             qPrintable(QObject::tr("%1 could not be written: %2").arg(feature, QString::fromUtf8(what))));
}

int decimalsFor(double increment)
{
    if (increment <= 0.0)
        return 4;
    return std::max(0, std::min(6, int(std::ceil(-std::log10(increment)))));
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
    auto make = [&](const char* kind) {
        editor = new FeatureEditor(name, QLatin1String(kind), impl, parent);
        auto* layout = new QHBoxLayout(editor);
        layout->setContentsMargins(0, 0, 0, 0);
        return layout;
    };

    if (auto p = collection.parameter(FloatParameterName(name)); !p->isNull()) {
        impl->parameter = p;
        QHBoxLayout* layout = make("Float");
        auto* slider = new QSlider(Qt::Horizontal, editor);
        auto* box = new QDoubleSpinBox(editor);
        slider->setRange(0, SliderSteps);
        layout->addWidget(slider, 1);
        layout->addWidget(box);
        auto write = [editor, p, name](double v) {
            try {
                p->setValue(v);
            } catch (const std::exception& e) {
                logFailure(name, e.what());
            }
            editor->refresh();
        };
        impl->refresh = [p, slider, box] {
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
        connect(box, QOverload<double>::of(&QDoubleSpinBox::valueChanged), editor, write);
        connect(slider, &QSlider::sliderReleased, editor, [p, slider, write] {
            write(p->minimum() + (p->maximum() - p->minimum()) * slider->value() / SliderSteps);
        });
    } else if (auto p = collection.parameter(IntegerParameterName(name)); !p->isNull()) {
        impl->parameter = p;
        QHBoxLayout* layout = make("Integer");
        auto* slider = new QSlider(Qt::Horizontal, editor);
        auto* box = new QDoubleSpinBox(editor);
        box->setDecimals(0);
        layout->addWidget(slider, 1);
        layout->addWidget(box);
        auto write = [editor, p, name](double v) {
            try {
                p->setValue(qint64(std::llround(v)));
            } catch (const std::exception& e) {
                logFailure(name, e.what());
            }
            editor->refresh();
        };
        impl->refresh = [p, slider, box] {
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
        connect(box, QOverload<double>::of(&QDoubleSpinBox::valueChanged), editor, write);
        connect(slider, &QSlider::sliderReleased, editor, [slider, write] { write(slider->value()); });
    } else if (auto p = collection.parameter(EnumParameterName(name)); !p->isNull()) {
        impl->parameter = p;
        auto* combo = new QComboBox;
        make("Enumeration")->addWidget(combo);
        combo->setParent(editor);
        impl->refresh = [p, combo] {
            const QSignalBlocker block(combo);
            combo->clear();
            for (const QVariantMap& entry : p->entries())
                if (entry.value(QStringLiteral("Available")).toBool())
                    combo->addItem(entry.value(QStringLiteral("DisplayName")).toString(),
                                   entry.value(QStringLiteral("Symbolic")));
            combo->setCurrentIndex(combo->findData(p->value()));
            combo->setEnabled(p->isWritable());
        };
        connect(combo, QOverload<int>::of(&QComboBox::activated), editor, [editor, p, combo, name] {
            try {
                p->setValue(combo->currentData().toString());
            } catch (const std::exception& e) {
                logFailure(name, e.what());
            }
            editor->refresh();
        });
    } else if (auto p = collection.parameter(BooleanParameterName(name)); !p->isNull()) {
        impl->parameter = p;
        auto* check = new QCheckBox;
        make("Boolean")->addWidget(check);
        check->setParent(editor);
        check->setAccessibleName(name);
        impl->refresh = [p, check] {
            const QSignalBlocker block(check);
            check->setChecked(p->value());
            check->setEnabled(p->isWritable());
        };
        connect(check, &QCheckBox::toggled, editor, [editor, p, name](bool on) {
            try {
                p->setValue(on);
            } catch (const std::exception& e) {
                logFailure(name, e.what());
            }
            editor->refresh();
        });
    } else if (auto p = collection.parameter(StringParameterName(name)); !p->isNull()) {
        impl->parameter = p;
        auto* line = new QLineEdit;
        make("String")->addWidget(line);
        line->setParent(editor);
        impl->refresh = [p, line] {
            const QSignalBlocker block(line);
            line->setText(p->value());
            line->setReadOnly(!p->isWritable());
        };
        connect(line, &QLineEdit::editingFinished, editor, [editor, p, line, name] {
            try {
                p->setValue(line->text());
            } catch (const std::exception& e) {
                logFailure(name, e.what());
            }
            editor->refresh();
        });
    } else if (auto p = collection.parameter(CommandParameterName(name)); !p->isNull()) {
        impl->parameter = p;
        auto* button = new QPushButton(tr("Execute"));
        make("Command")->addWidget(button);
        button->setParent(editor);
        button->setAccessibleName(name);
        impl->refresh = [p, button] { button->setEnabled(p->isWritable()); };
        connect(button, &QPushButton::clicked, editor, [editor, p, name] {
            try {
                p->execute();
            } catch (const std::exception& e) {
                logFailure(name, e.what());
            }
            editor->refresh();
        });
    } else {
        delete impl;
        return nullptr;
    }
    editor->refresh();
    return editor;
}
