{ find_faces MODELS/ PHOTO: the box of every face in a photograph, in pixels, by the TensorFlow network. }
program find_faces;

{$ifdef FPC}{$mode delphi}{$endif}
{$apptype console}

uses
  Math, qorocv460;

var
  Results: array[0..FaceResults - 1] of Double;
  Count, Width, Height, At: Integer;

begin
  { Pascal may turn the network's harmless steps beyond the range of numbers into exceptions. A thread's mask
    is its own: every thread that calls the library sets it. }
  SetExceptionMask([exInvalidOp, exDenormalized, exZeroDivide, exOverflow, exUnderflow, exPrecision]);
  if initModelsAtPath(PAnsiChar(UTF8Encode(ParamStr(1)))) <> 0 then
    Halt(1);
  Count := FaceResults;
  if findQORFacesDUNInTread01(PAnsiChar(UTF8Encode(ParamStr(2))), @Results, Count, Tensorflow, FirstSlot, 0,
    Width, Height) = Unreadable then
    Halt(1);
  At := 1;
  while At < Count do
  begin
    WriteLn('from ', Results[At] * Width:0:0, ', ', Results[At + 1] * Height:0:0, ' to ',
      Results[At + 2] * Width:0:0, ', ', Results[At + 3] * Height:0:0);
    Inc(At, FaceRecord);
  end;
end.
