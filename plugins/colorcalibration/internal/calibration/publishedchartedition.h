#pragma once

/// Which of the chart maker's published value sets: charts made after
/// November 2014, or before.
enum class PublishedChartEdition { Post2014, Pre2014 };
