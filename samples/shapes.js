// Draws a bar chart with shapes; what a bar means is told by its hatch:
//
//     cscript //nologo shapes.js
//
// A shape draws into any device context of its own process. In a host with forms pass a form's hDC; cscript has no window,
// so here it is 0 and nothing is seen.
var rbsBS_HATCHED = 2, lpsPS_DASH = 1;
var hDC = 0;
var left = 20, bottom = 220, width = 30;

function drawBar(index, height) {
    var bar = new ActiveXObject("VelkSupport.CGDIRectangle");
    bar.Left = left + index * (width + 10);
    bar.Right = bar.Left + width;
    bar.Top = bottom - height;
    bar.Bottom = bottom;
    bar.BrushStyle = rbsBS_HATCHED;
    bar.HatchStyle = index;
    bar.DrawRectangle(hDC);
    return bar.Right;
}

function drawLimit(height, end) {
    var limit = new ActiveXObject("VelkSupport.CGDILine");
    limit.X1 = left;
    limit.X2 = end;
    limit.Y1 = limit.Y2 = bottom - height;
    limit.PenStyle = lpsPS_DASH;
    limit.BorderColor = 0x0000FF;  // red: the low byte
    limit.DrawLine(hDC);
}

function markHighest(index, height) {
    var mark = new ActiveXObject("VelkSupport.CGDIEllipse");
    mark.Left = left + index * (width + 10) + 10;
    mark.Right = mark.Left + 10;
    mark.Top = bottom - height - 15;
    mark.Bottom = mark.Top + 10;
    mark.DrawEllipse(hDC);

    var ring = new ActiveXObject("VelkSupport.CGDIArc");
    ring.Left = mark.Left - 3;
    ring.Right = mark.Right + 3;
    ring.Top = mark.Top - 3;
    ring.Bottom = mark.Bottom + 3;
    ring.DrawArcByAngleSweep(hDC, 0, 360);
}

var heights = [120, 180, 60, 150];
var end = 0, highest = 0;
for (var i = 0; i < heights.length; i++) {
    end = drawBar(i, heights[i]);
    if (heights[i] > heights[highest]) highest = i;
}
drawLimit(100, end);
markHighest(highest, heights[highest]);
WScript.Echo(heights.length + " bars from " + left + " to " + end + ", the highest is number " + (highest + 1));
WScript.Quit(0);
