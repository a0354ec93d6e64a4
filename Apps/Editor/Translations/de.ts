<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AttributesDock</name>
    <message>
        <source>Attributes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select a node to see its attributes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No library that is loaded has this type of node. The document keeps what it says.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nodes of several types are selected. Select nodes of one type to edit them together.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unknown type</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%1 (%n nodes)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n nodes</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>No presets yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save as Preset…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save as Preset</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name of the preset:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Command: value apply</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Options for value run</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reset attributes of %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Reset attributes of %n nodes</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Apply preset %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CanvasActions</name>
    <message>
        <source>Gray</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Blue</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Teal</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Green</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Red</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Purple</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Node…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cut</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paste</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Duplicate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Duplicate with Inputs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete and Reconnect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mute or Unmute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rename…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edit Note…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connect Selected…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insert Node…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insert Reroute Point</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select Connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About This Node Type</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lay Out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Align Left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Align Right</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Align Top</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Align Bottom</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Align in a Row</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Align in a Column</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Distribute Across</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Distribute Down</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Frame</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Right</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Down</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom to Selection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom to All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom In</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom Out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Life Size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Thumbnails</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Dim What Does Not Feed the Shown Node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Map</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Arrange</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Frame Color</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CanvasCommands</name>
    <message>
        <source>Add %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Add %n file(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Connect %1 to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Disconnect %n wire(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Remove the selection</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Duplicate %n node(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Paste</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a frame</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n node(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Move %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select the nodes that the frame is to go around.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Frame</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Color frames</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DockFrames</name>
    <message>
        <source>Viewer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>3D view</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Attributes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Outputs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Problems</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Profiler</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>History</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Missing files</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DocumentDialogs</name>
    <message>
        <source>Value graphs (*.json)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save As</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>untitled.json</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unsaved Changes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save the changes to %1?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What is not saved is lost.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cannot Save</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>EditorWindow</name>
    <message>
        <source>&amp;File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;New…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open &amp;recent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save &amp;as…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Re&amp;vert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Write all outputs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Redo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Thumbnails on nodes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>T&amp;heme</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>As the desktop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Light</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Dark</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Reset the layout</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;First steps</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Keyboard shortcuts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nodes evaluated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stops computing until the next change</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop computing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cannot open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 cannot be opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Revert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go back to what was saved last? What was changed since is lost.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1[*] – Value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cannot start from this template</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FilesChangedBar</name>
    <message>
        <source>Changed files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Read Again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Read the changed files again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Always</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Read changed files again without asking</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ignore</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go on with what was read before</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file of %1 has changed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The files of %1 readers have changed.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FirstSteps</name>
    <message>
        <source>First steps</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Do not show this again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Skip</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add nodes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is the graph. Press Tab, or double-click, and type what you look for: the node appears where the pointer is. Drag from one plug to another to connect them.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>See the result</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The image of the node that you choose is shown here, and again after every change. Scroll to zoom, and drag to move.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set attributes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select a node to see its attributes. Everything can be undone, so try what a slider does.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep the result</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An output writes an image to a file. The ending of its name says the format. Write All writes them all.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find out more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Each node has a page that says what it does and what each of its attributes is for. You can read these steps again from the Help menu.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Step %1 of %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Done</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>GlProgram</name>
    <message>
        <source>a shader does not compile: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the shaders do not fit together: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>GraphCanvas</name>
    <message>
        <source>Canvas</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Graph of nodes</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n node(s) selected</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>There is no node type &quot;%1&quot;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; has no output that fits.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; has no input that fits.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing of &quot;%1&quot; fits a free input of &quot;%2&quot;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name of the node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Note of the node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Title of the frame</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>GraphView</name>
    <message>
        <source>Press Tab or double click to add a node.
Drop image files here to read them.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>HelpDock</name>
    <message>
        <source>Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Page of the node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select a node to read its page.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No library that is loaded has the type %1.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>HistoryDock</name>
    <message>
        <source>History</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>History of changes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New document</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opened</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>HistoryModel</name>
    <message>
        <source>Where the document is</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undone</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Minimap</name>
    <message>
        <source>Map of the graph</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Map of the graph: click to go there</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MissingInputs</name>
    <message>
        <source>Missing Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What is missing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Locate…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Locate the file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No library that is loaded has its type</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Everything that the document needs is there.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The document needs what is not there. Nodes without it make no images.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Locate %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Locate files of %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Locate files of %n readers</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
</context>
<context>
    <name>NodeFace</name>
    <message>
        <source>Unknown type</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>NodeHeader</name>
    <message>
        <source>Enabled</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A disabled node passes on what comes in, or does nothing; Help says what.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name of the node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Na&amp;me</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Note</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What this node is there for</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>N&amp;ote</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reset</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sets every attribute to its default</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Presets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sets of values under a name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy as Command</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copies what the node does as a command for the terminal</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the page of this node</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>NodeHelp</name>
    <message>
        <source>from %1 to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>from %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>up to %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>in %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>default %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>One of %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>any number of connections</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Attributes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Inputs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Outputs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Every attribute is an input too: a wire can feed it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Also found as: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>NodeItem</name>
    <message>
        <source>Show this node (V)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not evaluated: a node that feeds it failed.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>NodePainter</name>
    <message>
        <source>&lt; 1 ms</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 ms</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Muted: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>NodeSearchPopup</name>
    <message>
        <source>Add a node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find a node type</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Node types</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No node type is found by these words.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>OutputForm</name>
    <message>
        <source>Image that is written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File that is written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The ending says the format. A relative path starts from the folder of the document.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose the file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Samples</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What each sample is stored as</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Float (32 bits)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Half (16 bits)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Integers of 16 bits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Integers of 8 bits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signed integers of 16 bits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>I&amp;ntegers hold</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What integers stand for</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>0 to 1, as shares of the largest</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The values themselves</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Opacity</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Whether the opacity is written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Leave out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Metadata</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Whether metadata is written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Layer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Outputs with one path and different layers are written to one file, where its format has layers.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Layer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Write to</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>OutputsDock</name>
    <message>
        <source>Outputs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What was written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is written yet. Add an output to keep an image as a file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add an output</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove the selected output</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Write All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Write all outputs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Writes every output, and what the enabled writers write</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel writing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Progress of writing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 file written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 files written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, 1 error</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, %1 errors</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, canceled</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>there is no image to write: add a node that makes one</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>OutputsModel</name>
    <message>
        <source>Automatic</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Samples</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PanelWindow</name>
    <message>
        <source>Image files (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Command</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The command that makes this image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The output that is shown</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save image…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Writes the image that is shown to a file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy as command</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copies the command that makes this image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Redo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The node has no image to show.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is not enough memory to show the image.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This node makes no image.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save image</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ProblemsDock</name>
    <message>
        <source>Errors and notes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No problems.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Problems</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Problems (%1)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ProblemsModel</name>
    <message>
        <source>Document</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error at %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Note on %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Message</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ProfilerDock</name>
    <message>
        <source>Profiler</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cost of each node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing has been evaluated yet.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ProfilerModel</name>
    <message>
        <source>%1 ms</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Total</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How long the last evaluation took</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What the samples of the results take in memory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How often the node was evaluated since the document was opened</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Memory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Evaluations</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QNodeAttributesWidget</name>
    <message>
        <source>on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: all defaults</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reset all</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sets every attribute to its default</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This node has no attributes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reset %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Back to the default</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name in documents: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Default: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>driven by %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value comes from a connection. Disconnect it to edit it here.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RecentFiles</name>
    <message>
        <source>No recent documents</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clear List</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RecoveryDialog</name>
    <message>
        <source>Recover Documents</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>These documents were being edited when the program ended. Their changes were kept.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Documents that can be recovered</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Document</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last change</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Discard…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Discard the changes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Later</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Decide later</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Recover</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recover the document</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New document</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It was being edited on another machine, and may still be.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The document cannot be recovered.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Discard Changes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Discard the changes to %1? They cannot be brought back.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SaveAsTo</name>
    <message>
        <source>Adapt paths to %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::AttributeEditor</name>
    <message>
        <source>Choose a file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>W</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>H</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>R</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>G</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>B</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>O</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::ContourPopup</name>
    <message>
        <source>Show contours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Contours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Step</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The step of value from one contour to the next</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A tenth of the range</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::HistogramBar</name>
    <message>
        <source>Range</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Where the values of black and white come from</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value shown as black</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value shown as white</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Log</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Logarithmic histogram</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows rare values beside frequent ones</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Histogram and shown range</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::HistogramPlot</name>
    <message>
        <source>Histogram</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::ImageView</name>
    <message>
        <source>Computing…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Computing… %1 %</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Arrow keys move the image, Ctrl with arrow keys moves a cursor over its pixels</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::ProbeTable</name>
    <message>
        <source>Probes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Place</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Map</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lowest</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Highest</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Mean</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Count</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>outside</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>mean %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::RangeHandle</name>
    <message>
        <source>White point</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Black point</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value shown as white</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The value shown as black</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::RangeModes</name>
    <message>
        <source>Absolute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Declared</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lowest to highest</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Custom</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Color ramp</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hillshade</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Slope</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All channels</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Red</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>X</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>First</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Green</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Y</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Second</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Blue</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Z</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Third</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::ShadingPopup</name>
    <message>
        <source>Shading</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Color ramp</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Light from</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Where the light comes from, clockwise from the top of the image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Light height</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How high the light stands over the horizon</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Height scale</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Heights in pixels per unit of value</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::ToolRow</name>
    <message>
        <source>More tools</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::ViewerToolbar</name>
    <message>
        <source>0 to 1, of the signed mode -1 to 1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The range that the image declares</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The lowest to the highest value of the image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A range of your own, which stays when the image changes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Viewer tools</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shading</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shading: gray, a color ramp, or relief lit from the side</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Contours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lines of equal value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Marks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Marks NaN, infinities, and values below and above the range</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tiles</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the image three by three times</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Probe</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A click watches a pixel, a drag watches a region</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compare</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The image before to the left of a line</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the whole image (F)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Life size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>One pixel for one (1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Histogram</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows or hides the histogram</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Which values are black and white</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Channels</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The channels that are shown</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ScEng::ViewerWidget</name>
    <message>
        <source>color</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>signed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>pair</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no finite value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>measured %1 to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 NaN</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 infinite</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Facts of the image</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Value under the cursor</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 × %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>declared %1 to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>x %1, y %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>map %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Viewer</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SharedPanel</name>
    <message>
        <source>A connection feeds it at %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Set %1 of %n nodes</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ShortcutsDialog</name>
    <message>
        <source>Keyboard Shortcuts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search by name or keys</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shortcuts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Action</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keys</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> or </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No shortcut has these words.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Templates</name>
    <message>
        <source>Empty</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A document without nodes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shaded Terrain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A generated height field, lit from the upper left.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Height Bands</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Terraces, and a soft mask for each band of heights.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cliffs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How steep the land is, and a mask of the steepest places.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lakes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Water in the low places, each lake with a number, and the shores.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Beveled Shape</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A mask raised with a bevel and lit. Connect your own mask.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hollows</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Land shaded by how much of the sky each place sees.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TemplatesDialog</name>
    <message>
        <source>New from Template</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Templates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TerrainCanvas</name>
    <message>
        <source>Terrain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Arrow keys turn the terrain, with Shift they move it, plus and minus zoom, Home shows all of it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The 3D view needs OpenGL, which cannot be used here: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no height map to show.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An image of %1 × %2 pixels is too small for a terrain.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The image has no finite heights.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TerrainRenderer</name>
    <message>
        <source>this display offers no OpenGL context</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>OpenGL cannot draw off the screen here</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>this OpenGL is older than 2.1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the display took its OpenGL context back</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>OpenGL has no memory for a picture of this size</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TerrainSettingsPopup</name>
    <message>
        <source>Exaggeration of heights</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Direction of the light</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Height of the light</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings of the 3D view</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Exaggeration</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Light &amp;direction</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Light &amp;height</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Reset settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reset the settings of the 3D view</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TerrainView</name>
    <message>
        <source>3D view</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reset view</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show all of the terrain (Home)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>−</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom out (−)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>+</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom in (+)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wireframe</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show the lines of the mesh (W)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Height and light…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Exaggeration and light</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TerrainWorker</name>
    <message>
        <source>there is not enough memory for this image</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ViewerDock</name>
    <message>
        <source>Output</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The output of the node that is shown</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Result or input</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the result of the node, or an image that feeds it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pin</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stays with this node whatever is selected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pin the shown node</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is shown</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Result</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Input %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Workspace</name>
    <message>
        <source>Read again: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
