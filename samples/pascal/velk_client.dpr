{ A client in Object Pascal (Delphi, Free Pascal): late and early bound, errors, events, a window with limits and an icon menu.

      fpc -Mdelphi -Fu..\..\include velk_client.dpr && velk_client.exe C:\data\scale.dat

  Early bound it uses VelkSupport_TLB.pas of the package, made from the type library. The library has to be registered. }
program velk_client;

{$APPTYPE CONSOLE}
{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}

uses
  Windows, SysUtils, Classes, Variants, ActiveX, ComObj, VelkSupport_TLB;

type
  TProgress = class
    Events: Integer;
    procedure Shown(Sender: TObject; var Fraction: Single);
  end;

procedure TProgress.Shown(Sender: TObject; var Fraction: Single);
begin
  Inc(Events);
end;

procedure LateBound;
var
  List, System, Ini, Sections: OleVariant;
  Left, Top, Width, Height: SmallInt;
begin
  List := CreateOleObject('VelkSupport.CLinkedList');
  List.Add('second');
  List.Add(2.5);
  List.Add('first', -1);
  WriteLn('List: ', List.Count, ' values, ', List.Item(3), ' and ', List.Item(2));

  System := CreateOleObject('VelkSupport.COSInfo');
  Left := 0; Top := 0; Width := 0; Height := 0;
  System.GetWorkArea(Left, Top, Width, Height);    { variables are passed by reference and receive the answer }
  WriteLn('Work area: ', (Width > 0) and (Height > 0));

  Ini := CreateOleObject('VelkSupport.CIniFile');
  Ini.Init(WideString(ChangeFileExt(ParamStr(0), '.ini')));
  Ini.SaveStringValue('Port', 'Name', 'COM1');
  Ini.SaveStringValue('Scale', 'Unit', 'kg');
  Sections := Unassigned;
  Ini.EnumerateAllSections(Sections);
  WriteLn('Sections: ', VarArrayHighBound(Sections, 1) - VarArrayLowBound(Sections, 1) + 1, ', the port is ',
    Ini.GetStringValue('Port', 'Name'));
  try
    List.CheckIndex(99);
  except
    on Failure: EOleException do
      WriteLn('Late bound: ', Failure.ErrorCode and $FFFF, ' ', Failure.Message, ' from ', Failure.Source);
  end;
end;

procedure EarlyBound(const FileName: WideString);
var
  Progress: TProgress;
  Checksum: TEvsCCRC32;
  Stack: _CStack;
  Value: OleVariant;
  Step: Integer;
begin
  Progress := TProgress.Create;
  Checksum := TEvsCCRC32.Create(nil);    { makes the object and connects to its events }
  Checksum.OnProgress := Progress.Shown;
  Checksum.ComServer.InputFileName := FileName;
  WriteLn('Checksum: ', IntToHex(Checksum.ComServer.GetCRCFromFile, 8), ', told of progress: ', Progress.Events > 0);
  Checksum.Free;
  Progress.Free;

  Stack := CoCStack.Create;
  Value := 'pushed';
  Stack.Push(Value);
  WriteLn('Stack: ', Stack.Pop, ', ', Stack.Count, ' left');
  Stack := CoCStack.Create;
  Step := 0;
  Stack.Set_GrowBy(Step);    { without a step there is no room for the first value }
  try
    Stack.Push(Value);
  except
    on Failure: EOleException do WriteLn('Early bound: ', Failure.ErrorCode and $FFFF, ' ', Failure.Message);
  end;
end;

procedure Window;
var
  Limits: _CFormSizeConstraint;
  Icons: cIconMenu;
  Form, Least: Integer;
  Area: TRect;
begin
  Form := CreateWindowW('STATIC', 'Limited', WS_OVERLAPPEDWINDOW, 0, 0, 400, 300, 0, 0, HInstance, nil);
  Limits := CoCFormSizeConstraint.Create;
  Least := 320;
  Limits.Set_MinWidth(Least);
  Limits.Init(Form);
  MoveWindow(Form, 0, 0, 100, 300, False);
  GetWindowRect(Form, Area);
  Icons := CocIconMenu.Create;
  Icons.Attach(Form);
  WriteLn('Window: ', Area.Right - Area.Left, ' wide, icons for ', Icons.hWnd = Form);
  Icons.Detach;
  Limits.Release;
  DestroyWindow(Form);
end;

begin
  CoInitialize(nil);
  LateBound;
  EarlyBound(WideString(ParamStr(1)));
  Window;
end.
