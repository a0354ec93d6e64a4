# Tests of the host's libraries, and the small libraries that they load.
set(host "${PROJECT_SOURCE_DIR}/Host")

# value_add_test_library(<name> SOURCE <file> [DEPENDS <target>...] [DEFINITIONS <definition>...])
#
# A library that the tests load by file: <name>.so in the folder that VALUE_TEST_LIBRARIES names.
function(value_add_test_library name)
  cmake_parse_arguments(arg "" "SOURCE" "DEPENDS;DEFINITIONS" ${ARGN})
  set(target TestLibrary${name})
  add_library(${target} MODULE "${PROJECT_SOURCE_DIR}/Tests/Libraries/${arg_SOURCE}")
  target_link_libraries(${target} PRIVATE ${arg_DEPENDS} ValueBuild)
  target_compile_definitions(${target} PRIVATE ${arg_DEFINITIONS})
  set_target_properties(${target} PROPERTIES
    PREFIX ""
    SUFFIX ".so"
    OUTPUT_NAME ${name}
    LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/TestLibraries")
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The loader never unloads a library that defines unique symbols.
    target_compile_options(${target} PRIVATE -fno-gnu-unique)
  endif()
endfunction()

value_add_test_library(TwinTwo SOURCE TwinOperation.cpp
  DEPENDS ValueHost::Image DEFINITIONS VALUE_TWIN_FACTOR=2.0F)
value_add_test_library(TwinThree SOURCE TwinOperation.cpp
  DEPENDS ValueHost::Image DEFINITIONS VALUE_TWIN_FACTOR=3.0F)

set(node_libraries
  BadAttributes
  CrashesOnLoad
  CrashesOnNan
  CrashesOnUnload
  DependsOnThreads
  DescriptorAboveCount
  ExitsInEvaluate
  ExportsNothing
  ForeignFactory
  ForgetsSamples
  HangsInEvaluate
  IgnoresEvents
  KeepsInput
  LacksOneExport
  LeaksImages
  LeaksMemory
  ManyLines
  MissingIcon
  ModifiesInput
  NegativeCount
  NoFactory
  NoOutput
  Noisy
  NullDescriptor
  NullLibraryObject
  OddState
  OtherNode
  ReadsPastEnd
  SharedDescriptor
  SilentError
  TakenNumbers
  ThreadStays
  ThrowingEntry
  TinyLibrary
  TwinNames
  TwinNumbers
  UnstableCount
  WritesPastEnd)
foreach(library IN LISTS node_libraries)
  value_add_test_library(${library} SOURCE ${library}.cpp DEPENDS ValueHost::Tools)
endforeach()
set(throwing_operations Library LibraryName Count Factory FactoryType Name TypeName CreateNode GroupCode IconPath)
foreach(operation IN LISTS throwing_operations)
  value_add_test_library(ThrowsIn${operation} SOURCE ThrowsInCatalog.cpp
    DEPENDS ValueHost::Tools DEFINITIONS VALUE_THROWS_IN="${operation}")
  list(APPEND node_libraries ThrowsIn${operation})
endforeach()

# Libraries that do to their process what none may. Each is a name, the place and the deed.
add_library(TestMisbehaves OBJECT "${PROJECT_SOURCE_DIR}/Tests/Libraries/Misbehaves.cpp")
target_link_libraries(TestMisbehaves PRIVATE ValueHost::Tools ValueBuild)
target_include_directories(TestMisbehaves PRIVATE "${PROJECT_SOURCE_DIR}")
set_target_properties(TestMisbehaves PROPERTIES POSITION_INDEPENDENT_CODE ON)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(TestMisbehaves PRIVATE -fno-gnu-unique)
endif()
set(misbehaviors
  "LoadExits,constructor,exit"
  "LoadAborts,constructor,abort"
  "LoadHangs,constructor,hang"
  "LoadPrints,constructor,print"
  "LoadCloses,constructor,close"
  "LoadClosesAll,constructor,close all"
  "LoadRounds,constructor,round"
  "LoadFlushesToZero,constructor,flush to zero"
  "LoadChangesMask,constructor,umask"
  "LoadChangesLocale,constructor,locale"
  "EntryQuickExits,GetLibraryInterface,quick_exit"
  "EntryChangesFolder,GetNodeInterface,chdir"
  "EntryChangesSignal,GetNodeInterface,signal"
  "NodeEnds,CreateNode,_Exit"
  "NodeTraps,CreateNode,trap"
  "NodeCrashesAtItsEnd,~Node,crash"
  "UnloadEnds,destructor,_exit"
  "EvaluateExits,Evaluate,exit"
  "EvaluateEnds,Evaluate,_exit"
  "EvaluateQuickExits,Evaluate,quick_exit"
  "EvaluateEndsByErrx,Evaluate,errx"
  "EvaluateAborts,Evaluate,abort"
  "EvaluateCrashes,Evaluate,crash"
  "EvaluateUsesUpStack,Evaluate,overflow"
  "EvaluatePrints,Evaluate,print"
  "EvaluateRounds,Evaluate,round"
  "EvaluateFlushesToZero,Evaluate,flush to zero"
  "EvaluateTraps,Evaluate,trap"
  "EvaluateCloses,Evaluate,close"
  "EvaluateChangesFolder,Evaluate,chdir"
  "EvaluateChangesSignal,Evaluate,signal"
  "EvaluateChangesLocale,Evaluate,locale"
  "EvaluateChangesMask,Evaluate,umask"
  "EvaluateStartsThread,Evaluate,start a thread"
  "JoiningThrows,OnAdded,throw"
  "SinkThrows,IsSink,throw"
  "AliasThrows,GetInplugAlias,throw"
  "ObserverThrows,OnNodeChanged,throw"
  "SourceObserverThrows,OnAttributeSourcesChanged,throw"
  "BehavesWell,nowhere,nothing")
foreach(misbehavior IN LISTS misbehaviors)
  string(REPLACE "," ";" parts "${misbehavior}")
  list(GET parts 0 name)
  list(GET parts 1 place)
  list(GET parts 2 deed)
  value_add_test_library(${name} SOURCE Misbehavior.cpp
    DEPENDS ValueHost::Tools TestMisbehaves DEFINITIONS "VALUE_PLACE=\"${place}\"" "VALUE_DEED=\"${deed}\"")
  list(APPEND node_libraries ${name})
endforeach()
list(TRANSFORM node_libraries PREPEND TestLibrary OUTPUT_VARIABLE node_library_targets)

# The OpenCL driver for processors compiles programs into a folder, and its libraries keep memory to the end of the
# process; which of them shows only in whole call stacks.
set(gpu_test_environment
  "POCL_CACHE_DIR=${PROJECT_BINARY_DIR}/PoclCache"
  "LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_SOURCE_DIR}/Sanitizers/leaks.supp"
  "ASAN_OPTIONS=fast_unwind_on_malloc=0")
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/PoclCache")

set_source_files_properties("${host}/Util/HostModuleTest.cpp" PROPERTIES
  COMPILE_DEFINITIONS "VALUE_LIBRARY_VERSION=\"${VALUE_LIBRARY_VERSION}\"")
value_add_test(HostBaseTests
  SOURCES
    "${host}/Math/BorderTest.cpp"
    "${host}/Math/GeometryTest.cpp"
    "${host}/Util/AddressRangeTest.cpp"
    "${host}/Util/ClosestNameTest.cpp"
    "${host}/Util/EvaluationScopeTest.cpp"
    "${host}/Util/ForksTest.cpp"
    "${host}/Util/HostModuleTest.cpp"
    "${host}/Util/LogTest.cpp"
    "${host}/Util/ParallelForTest.cpp"
    "${host}/Util/ParallelReduceTest.cpp"
    "${host}/Util/ParallelRowsTest.cpp"
    "${host}/Util/RefCounterTest.cpp"
    "${host}/Util/ThreadPoolTest.cpp"
    "${host}/Util/WorkerLimitTest.cpp"
  DEPENDS ValueHost::Image ${CMAKE_DL_LIBS})

value_add_test(HostImageTests
  SOURCES
    "${host}/Image/Values/ComputeValueTest.cpp"
    "${host}/Image/DisplayImageTest.cpp"
    "${host}/Image/Distance/EuclideanDistanceTest.cpp"
    "${host}/Image/Blur/FilterTest.cpp"
    "${host}/Image/Blur/GaussianBlurTest.cpp"
    "${host}/Image/Gradient/GradientTest.cpp"
    "${host}/Image/Placement/ImageOpTest.cpp"
    "${host}/Image/Regions/ImageRegionTest.cpp"
    "${host}/Image/ImageTest.cpp"
    "${host}/Image/OversizeTest.cpp"
    "${host}/Image/Placement/PasteTest.cpp"
    "${host}/Image/Placement/PlacementTest.cpp"
    "${host}/Image/Values/PendingImageTest.cpp"
    "${host}/Image/Values/SampleRangeTest.cpp"
  DEPENDS ValueHost::Image hwy::hwy ${CMAKE_DL_LIBS})
add_dependencies(HostImageTests TestLibraryTwinTwo TestLibraryTwinThree)

value_add_test(HostGpuTests
  SOURCES
    "${host}/Gpu/AmbientOcclusionTest.cpp"
    "${host}/Gpu/DeviceTest.cpp"
    "${host}/Gpu/OcclusionPlanTest.cpp"
    "${host}/Gpu/OcclusionSkippingTest.cpp"
  DEPENDS ValueHost::Gpu OpenCL::Headers
  ENVIRONMENT ${gpu_test_environment})

value_add_test(HostToolsTests
  SOURCES
    "${host}/Tools/AcyclicGraph.cpp"
    "${host}/Tools/AcyclicGraphTest.cpp"
    "${host}/Tools/AttributeTest.cpp"
    "${host}/Tools/EngineTest.cpp"
    "${host}/Tools/NodeLibraryTest.cpp"
    "${host}/Tools/NodeTest.cpp"
    "${host}/Tools/RunningCallTest.cpp"
    "${host}/Tools/TypeGuardTest.cpp"
  DEPENDS ValueHost::Tools ${CMAKE_DL_LIBS})
add_dependencies(HostToolsTests ${node_library_targets})

# All libraries that the tests of the command line validate.
add_custom_target(NodeTestLibraries DEPENDS ${node_library_targets})

value_add_test(HostValidationTests
  SOURCES
    "${host}/Validation/ChildProcessTest.cpp"
    "${host}/Validation/GuardedMemoryTest.cpp"
    "${host}/Validation/ProcessState.cpp"
    "${host}/Validation/ProcessStateTest.cpp"
    "${host}/Validation/ThreadScan.cpp"
    "${host}/Validation/ThreadScanTest.cpp"
    "${host}/Validation/TrialTest.cpp"
    "${host}/Validation/ChildProcess.cpp"
    "${host}/Validation/GuardedMemory.cpp"
    "${host}/Validation/Trial.cpp"
    "${host}/Validation/Wording.cpp"
    "${host}/Validation/WordingTest.cpp"
  DEPENDS ValueHost::Tools)

# A codec whose files say what goes wrong, beside the host's libraries as all codecs are.
add_library(HostCodecFaulty MODULE
  "${host}/Files/Decoding/Faults/FaultyCodec.cpp"
  "${host}/Files/Decoding/DescriptionBytes.cpp"
  "${host}/Files/Decoding/Messages.cpp")
target_include_directories(HostCodecFaulty PRIVATE "${PROJECT_SOURCE_DIR}")
target_link_libraries(HostCodecFaulty PRIVATE ValueHost::Files Threads::Threads ValueBuild)

value_add_test(HostDecodingTests
  SOURCES
    "${host}/Files/Decoding/ConfinementTest.cpp"
    "${host}/Files/Decoding/DescriptionBytes.cpp"
    "${host}/Files/Decoding/DescriptionBytesTest.cpp"
    "${host}/Files/Decoding/HelperDecoderTest.cpp"
    "${host}/Files/Decoding/ReadAheadTest.cpp"
    "${host}/Files/Decoding/ReadBounds.cpp"
  DEPENDS ValueHost::Files Threads::Threads)
add_dependencies(HostDecodingTests HostCodecFaulty ValueDecoder)

value_add_test(HostFilesTests
  SOURCES
    "${host}/Documents/DocumentAdviceTest.cpp"
    "${host}/Documents/DocumentEditingTest.cpp"
    "${host}/Documents/DocumentEditsTest.cpp"
    "${host}/Documents/DocumentEvaluationTest.cpp"
    "${host}/Documents/DocumentLimitsTest.cpp"
    "${host}/Documents/DocumentSavingTest.cpp"
    "${host}/Documents/GraphDocumentTest.cpp"
    "${host}/Documents/GraphPictureTest.cpp"
    "${host}/Documents/NodeIdsTest.cpp"
    "${host}/Files/FileWatchTest.cpp"
    "${host}/Documents/UnknownNamesTest.cpp"
    "${host}/Files/ImageFileTest.cpp"
    "${host}/Files/ReadRegionTest.cpp"
    "${host}/Files/RoundTripTest.cpp"
    "${host}/Nodes/HostNodesTest.cpp"
    "${host}/Testing/ImageComparisonTest.cpp"
    "${host}/Testing/TestContextTest.cpp"
  DEPENDS ValueHost::Documents ValueHost::Nodes ValueHost::Testing OpenImageIO::OpenImageIO
  # A damaged file makes a library of image formats leak; which one shows only in whole call stacks.
  ENVIRONMENT ${gpu_test_environment})

value_add_test(HostEditingTests
  SOURCES
    "${host}/Editing/Background/BackgroundEvaluatorTest.cpp"
    "${host}/Editing/Background/BackgroundRunTest.cpp"
    "${host}/Editing/Background/PreviewMirror.cpp"
    "${host}/Editing/Background/PreviewPlan.cpp"
    "${host}/Editing/Background/PreviewTest.cpp"
    "${host}/Editing/Background/SessionFollower.cpp"
    "${host}/Editing/EditClipboardTest.cpp"
    "${host}/Editing/EditPropertiesTest.cpp"
    "${host}/Editing/EditSessionTest.cpp"
    "${host}/Editing/JournalTest.cpp"
    "${host}/Editing/JournalText.cpp"
    "${host}/Editing/KillsTest.cpp"
    "${host}/Editing/LargeDocumentTest.cpp"
    Support/WatchedMemory.cpp
  DEPENDS ValueHost::Editing ValueHost::NodeKit ValueHost::Nodes nlohmann_json::nlohmann_json
  ENVIRONMENT ${gpu_test_environment})

value_add_test(HostReadingTests
  SOURCES
    "${host}/Files/Reading/ChannelSelection.cpp"
    "${host}/Files/Reading/ChannelSelectionTest.cpp"
    "${host}/Files/Reading/OrientationTest.cpp"
    "${host}/Files/Codecs/StoredSamplesTest.cpp"
    "${host}/Files/Codecs/XmpPacketTest.cpp"
  DEPENDS ValueHost::Files)

value_add_test(HostCodecExrTests
  SOURCES
    "${host}/Files/Codecs/Exr/ExrCodecTest.cpp"
    "${host}/Files/Codecs/Exr/ExrDamageTest.cpp"
  DEPENDS ValueHost::Files OpenEXR::OpenEXR ZLIB::ZLIB)
add_dependencies(HostCodecExrTests HostCodecExr)

value_add_test(HostCodecPngTests
  SOURCES
    "${host}/Files/Codecs/Png/PngCodecTest.cpp"
  DEPENDS ValueHost::Files ZLIB::ZLIB)
add_dependencies(HostCodecPngTests HostCodecPng)
value_add_test(HostCodecRastersTests
  SOURCES
    "${host}/Files/Codecs/Rasters/RastersCodecTest.cpp"
    "${host}/Files/Codecs/Rasters/RastersDamageTest.cpp"
    "${host}/Files/Codecs/Rasters/RastersFormatsTest.cpp"
    "${host}/Files/Codecs/Rasters/RastersMetadataTest.cpp"
  DEPENDS ValueHost::Files nlohmann_json::nlohmann_json ZLIB::ZLIB)
add_dependencies(HostCodecRastersTests HostCodecRasters)
value_add_test(HostCodecPicturesTests
  SOURCES
    "${host}/Files/Codecs/Pictures/PicturesCodecTest.cpp"
    "${host}/Files/Codecs/Pictures/PictureMetadataTest.cpp"
    "${host}/Files/Codecs/Pictures/BmpTest.cpp"
    "${host}/Files/Codecs/Pictures/Jpeg2000DecoderTest.cpp"
    "${host}/Files/Codecs/Pictures/PnmTest.cpp"
    "${host}/Files/Codecs/Pictures/RowChecksTest.cpp"
    "${host}/Files/Codecs/Pictures/TiffDamageTest.cpp"
    "${host}/Files/Codecs/Pictures/TiffSamplesTest.cpp"
  DEPENDS ValueHost::Files ZLIB::ZLIB PkgConfig::OpenJpeg
  # The library of metadata loses the names of the XMP namespaces that it has registered.
  ENVIRONMENT
    "LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_SOURCE_DIR}/Sanitizers/leaks.supp"
    "ASAN_OPTIONS=fast_unwind_on_malloc=0")
add_dependencies(HostCodecPicturesTests HostCodecPictures)
# Saving, with the system's functions for files replaced by some that fail when they are told to.
value_add_test(HostSavingTests
  SOURCES
    "${host}/Files/Saving/FailingSaveTest.cpp"
    "${host}/Files/Saving/KeptFileTest.cpp"
    "${host}/Files/Saving/SignalCleanupTest.cpp"
    Support/FailingCalls.cpp
  DEPENDS ValueHost::Files ${CMAKE_DL_LIBS})

# The panels, on the offscreen platform of Qt.
set(widget_test_environment
  "QT_QPA_PLATFORM=offscreen"
  # Libraries behind Qt (fonts, displays) keep memory to the end of the process; which of them shows only in whole stacks.
  "LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_SOURCE_DIR}/Sanitizers/leaks.supp"
  "ASAN_OPTIONS=fast_unwind_on_malloc=0")
value_add_test(HostWidgetsTests
  SOURCES
    Contract/PanelsTest.cpp
    Widgets/WidgetTesting.cpp
    "${PROJECT_SOURCE_DIR}/Apps/Panel/ApplyLine.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Panel/FixedRange.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Panel/PanelWindow.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Panel/PanelWindowTest.cpp"
    "${host}/Widgets/QNodeAttributesWidgetTest.cpp"
    "${host}/Widgets/SliderScale.cpp"
    "${host}/Widgets/SliderScaleTest.cpp"
  DEPENDS ValueHost::Documents ValueHost::Files ValueHost::Nodes ValueHost::Viewing ValueHost::Widgets Qt6::Test
  ENVIRONMENT ${widget_test_environment})
set_target_properties(HostWidgetsTests PROPERTIES AUTOMOC ON)
# The same in real windows.
add_test(NAME PanelsInWindows
  COMMAND xvfb-run -a -s "-screen 0 1280x1024x24" $<TARGET_FILE:HostWidgetsTests>)
list(TRANSFORM widget_test_environment REPLACE "offscreen" "xcb" OUTPUT_VARIABLE window_test_environment)
set_tests_properties(PanelsInWindows PROPERTIES ENVIRONMENT "${window_test_environment}" TIMEOUT 300)

value_add_test(NodePagesTests
  SOURCES
    "${PROJECT_SOURCE_DIR}/Apps/NodePages/NodeText.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/NodePages/NodeTextTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/NodePages/Picture.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/NodePages/PictureTest.cpp"
  DEPENDS ValueHost::Tools)
value_keep_qt(NodePagesTests)

# What the command line is made of, as far as it can be tested from inside.
value_add_test(ValueProgramTests
  SOURCES
    "${PROJECT_SOURCE_DIR}/Apps/Value/Arguments.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/ArgumentsTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/BashLine.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/BashLineTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/CompleteLine.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/CompleteLineTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/CrashStack.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/CrashStackTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/DeclaredOptions.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/FilePairs.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/FilePairsTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/Glob.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/GlobTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/ImageFigures.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/ImageFiguresTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/Jobs.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/JobsTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/LastLine.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/LastLineTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/MemoryBudget.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/MemoryBudgetTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/MisplacedWords.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/NodeSearch.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/NodeSearchTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/OptionErrors.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/OutputName.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/OutputNameTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/ProfileCopy.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/ProfileSums.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/ProfileSumsTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/ProfileTrace.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/ProfileTraceTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/RoffPage.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/RoffPageTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/SafeText.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/SafeTextTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/UsageErrors.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/UsageErrorsTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/UsageText.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/WrapText.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Value/WrapTextTest.cpp"
  DEPENDS CLI11::CLI11 ValueHost::Files ValueHost::Nodes ValueHost::Tools nlohmann_json::nlohmann_json)

set(editor_docks "${PROJECT_SOURCE_DIR}/Apps/Editor/Docks")
value_add_test(EditorDocksTests
  SOURCES
    Widgets/WidgetTesting.cpp
    "${editor_docks}/AttributeTextTest.cpp"
    "${editor_docks}/AttributesDockTest.cpp"
    "${editor_docks}/DocksTest.cpp"
    "${editor_docks}/HistoryNamesTest.cpp"
    "${editor_docks}/OutputsDockTest.cpp"
    "${editor_docks}/PanelByHandTest.cpp"
  DEPENDS ValueEditorParts Qt6::Test
  ENVIRONMENT ${widget_test_environment})
set_target_properties(EditorDocksTests PROPERTIES AUTOMOC ON)


# The viewer of images, on the offscreen platform of Qt.
value_add_test(ViewerWidgetTests
  SOURCES
    Widgets/WidgetTesting.cpp
    "${host}/Widgets/HistogramBarTest.cpp"
    "${host}/Widgets/ImageViewTest.cpp"
    "${host}/Widgets/ProbeReading.cpp"
    "${host}/Widgets/ProbesTest.cpp"
    "${host}/Widgets/ViewPlacement.cpp"
    "${host}/Widgets/ViewPlacementTest.cpp"
    "${host}/Widgets/ViewText.cpp"
    "${host}/Widgets/ViewTextTest.cpp"
    "${host}/Widgets/ViewerByHandTest.cpp"
    "${host}/Widgets/ViewerWidgetTest.cpp"
  DEPENDS ValueHost::Viewing ValueHost::Widgets Qt6::Test
  ENVIRONMENT ${widget_test_environment})
value_add_test(HostViewingTests
  SOURCES
    "${host}/Viewing/ContourLinesTest.cpp"
    "${host}/Viewing/DrawViewTest.cpp"
    "${host}/Viewing/LookTest.cpp"
    "${host}/Viewing/ProbeTest.cpp"
    "${host}/Viewing/ReduceImageTest.cpp"
    "${host}/Viewing/ReliefTest.cpp"
    "${host}/Viewing/ViewImageTest.cpp"
  DEPENDS ValueHost::Viewing)

# The canvas of the editor.
set(canvas "${PROJECT_SOURCE_DIR}/Apps/Editor/Canvas")
value_add_test(CanvasTests
  SOURCES
    Widgets/WidgetTesting.cpp
    "${canvas}/AutoLayoutTest.cpp"
    "${canvas}/CanvasCommandsTest.cpp"
    "${canvas}/CanvasMenuTest.cpp"
    "${canvas}/CanvasMouseTest.cpp"
    "${canvas}/CanvasPaintTest.cpp"
    "${canvas}/CanvasSearchTest.cpp"
    "${canvas}/CanvasViewTest.cpp"
  DEPENDS ValueEditorParts Qt6::Test
  ENVIRONMENT ${widget_test_environment})
set_target_properties(CanvasTests PROPERTIES AUTOMOC ON)
# How fast it is: a program that prints times.
add_executable(CanvasBench EXCLUDE_FROM_ALL "${canvas}/CanvasBench.cpp")
target_link_libraries(CanvasBench PRIVATE ValueEditorParts ValueBuild)
target_compile_definitions(CanvasBench PRIVATE VALUE_LIBRARY_FILE="$<TARGET_FILE:Value>")
set_target_properties(CanvasBench PROPERTIES OUTPUT_NAME value-canvas-bench)

set(editor_files "${PROJECT_SOURCE_DIR}/Apps/Editor/Files")
value_add_test(EditorFilesTests
  SOURCES
    Widgets/WidgetTesting.cpp
    "${editor_files}/DialogsTest.cpp"
    "${editor_files}/FilesTest.cpp"
    "${editor_files}/SaveAsToTest.cpp"
  DEPENDS ValueEditorParts Qt6::Test
  ENVIRONMENT ${widget_test_environment})
set_target_properties(EditorFilesTests PROPERTIES AUTOMOC ON)

# The 3D view of the editor, where there is no OpenGL.
set(terrain "${PROJECT_SOURCE_DIR}/Apps/Editor/Terrain")
value_add_test(EditorTerrainTests
  SOURCES
    Widgets/WidgetTesting.cpp
    "${terrain}/HeightFieldTest.cpp"
    "${terrain}/SlopeMapTest.cpp"
    "${terrain}/SurfaceColorsTest.cpp"
    "${terrain}/TerrainCameraTest.cpp"
    "${terrain}/TerrainViewTest.cpp"
    "${terrain}/TerrainWithoutOpenGlTest.cpp"
    "${terrain}/TileMeshTest.cpp"
    "${terrain}/TileSelectionTest.cpp"
    "${terrain}/TileTreeTest.cpp"
  DEPENDS ValueEditorParts Qt6::Test
  ENVIRONMENT ${widget_test_environment} "DISPLAY=" "WAYLAND_DISPLAY=")
# The same view in real windows, where it draws with the software renderer.
add_executable(EditorTerrainWindowTests
  Widgets/WidgetTesting.cpp
  "${terrain}/TerrainPicturesTest.cpp"
  "${terrain}/TerrainViewTest.cpp")
target_link_libraries(EditorTerrainWindowTests PRIVATE ValueEditorParts Qt6::Test ValueBuild GTest::gtest_main)
add_test(NAME TerrainInWindows
  COMMAND xvfb-run -a -s "-screen 0 1280x1024x24" $<TARGET_FILE:EditorTerrainWindowTests>)
# The driver keeps a few bytes and is gone when leaks are looked for, so that they have no name to leave them out by.
set_tests_properties(TerrainInWindows PROPERTIES
  ENVIRONMENT "QT_QPA_PLATFORM=xcb;LIBGL_ALWAYS_SOFTWARE=1;ASAN_OPTIONS=detect_leaks=0"
  TIMEOUT 600)

# The window of the editor with everything in it.
value_add_test(EditorWindowTests
  SOURCES
    Widgets/WidgetTesting.cpp
    "${PROJECT_SOURCE_DIR}/Apps/Editor/Window/EditorWindowTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Editor/Window/PanelWiresTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Editor/Window/WindowByHandTest.cpp"
    "${PROJECT_SOURCE_DIR}/Apps/Editor/Window/WindowFilesTest.cpp"
  DEPENDS ValueEditorParts Qt6::Test
  ENVIRONMENT ${widget_test_environment})
# The texts in German, which are a part of the module.
target_compile_definitions(EditorWindowTests PRIVATE
  VALUE_GERMAN_TEXTS="${PROJECT_BINARY_DIR}/Apps/Editor/Translations/de.qm")
add_dependencies(EditorWindowTests ValueEditor)
# The same, and its parts, in real windows.
foreach(program CanvasTests EditorDocksTests EditorFilesTests EditorWindowTests ViewerWidgetTests)
  add_test(NAME ${program}InWindows
    COMMAND xvfb-run -a -s "-screen 0 1600x1024x24" $<TARGET_FILE:${program}>)
  set_tests_properties(${program}InWindows PROPERTIES ENVIRONMENT "${window_test_environment}" TIMEOUT 600)
endforeach()
# The 3D view draws there, whose driver makes code as it goes: with a full trace of each allocation that takes minutes, and
# what it keeps has no name when leaks are looked for.
set_tests_properties(EditorWindowTestsInWindows PROPERTIES
  ENVIRONMENT "QT_QPA_PLATFORM=xcb;LIBGL_ALWAYS_SOFTWARE=1;ASAN_OPTIONS=detect_leaks=0")
