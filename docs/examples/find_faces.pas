{ find_faces MODELS/ PHOTO: the box of every face in a photograph, in pixels. }
program find_faces;

uses
  Math, SysUtils, qorocv460;

var
  Results: array[0..FaceResults - 1] of Double;
  Count, Width, Height, At: Integer;

begin
  { Pascal traps floating-point exceptions, which the TensorFlow network raises in normal work. }
  SetExceptionMask([exInvalidOp, exDenormalized, exZeroDivide, exOverflow, exUnderflow, exPrecision]);
  if initModelsAtPath(PAnsiChar(AnsiString(ParamStr(1)))) <> 0 then
    Halt(1);
  Count := FaceResults;
  if findQORFacesDUNInTread01(PAnsiChar(AnsiString(ParamStr(2))), @Results[0], Count, 1, 1, 1000,
    Width, Height) < 0 then
    Halt(1);
  At := 1;
  while At < Count do
  begin
    WriteLn(Format('from %.0f, %.0f to %.0f, %.0f', [Results[At] * Width, Results[At + 1] * Height,
      Results[At + 2] * Width, Results[At + 3] * Height]));
    At := At + 8;
  end;
end.
