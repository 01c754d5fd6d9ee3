# Synthetic chart photographs: the chart finder's tests, its benchmark and its
# evaluation program all draw them with this one library.
add_library(colcal_chartscene STATIC ${CMAKE_CURRENT_LIST_DIR}/chartscene.cpp)
target_include_directories(colcal_chartscene PUBLIC ${CMAKE_CURRENT_LIST_DIR})
target_link_libraries(colcal_chartscene PUBLIC Qt5::Gui PRIVATE colcal_calibration)
